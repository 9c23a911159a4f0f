# Interface target with the sanitizers of KESTREL_SANITIZERS; empty when none are asked for.
add_library(kestrel_sanitizers INTERFACE)
if(KESTREL_SANITIZERS)
  target_compile_options(kestrel_sanitizers INTERFACE
    -fsanitize=${KESTREL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kestrel_sanitizers INTERFACE -fsanitize=${KESTREL_SANITIZERS})
endif()

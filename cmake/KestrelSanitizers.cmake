# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Interface target with the sanitizers in KESTREL_SANITIZERS and, with KESTREL_FUZZ, the edge
# counters of libFuzzer; empty by default.
add_library(kestrel_sanitizers INTERFACE)
if(KESTREL_SANITIZERS)
  target_compile_options(kestrel_sanitizers INTERFACE
    -fsanitize=${KESTREL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kestrel_sanitizers INTERFACE -fsanitize=${KESTREL_SANITIZERS})
endif()
if(KESTREL_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "KESTREL_FUZZ needs clang: cmake --preset fuzz")
  endif()
  target_compile_options(kestrel_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(kestrel_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
endif()

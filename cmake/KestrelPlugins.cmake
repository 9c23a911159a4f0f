# kestrel_add_plugin(NAME SOURCE...): a shared-library plug-in NAME.so, built against the public
# headers as anyone's is, and installed where the tool looks by default.
#
# The folder is a fixed part of the tool's interface, so it never follows CMAKE_INSTALL_LIBDIR.
set(KESTREL_PLUGIN_INSTALL_DIR "lib/norvane/vexil")

function(kestrel_add_plugin name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "")
  # Loading happens into a process that holds the library already, so no path to it is recorded.
  set_target_properties(${name} PROPERTIES SKIP_BUILD_RPATH ON INSTALL_RPATH "")
  target_link_libraries(${name} PRIVATE Kestrel::Kestrel kestrel_warnings kestrel_sanitizers)
  install(TARGETS ${name} LIBRARY DESTINATION ${KESTREL_PLUGIN_INSTALL_DIR} COMPONENT tool)
  set_property(GLOBAL APPEND PROPERTY KESTREL_PLUGINS ${name})
endfunction()

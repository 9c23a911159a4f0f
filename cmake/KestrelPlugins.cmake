# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# kestrel_add_plugin(NAME SOURCE...): adds a plug-in NAME.so, built against the public headers like
# any other plug-in, and installed where the tool looks by default if the prefix is /usr.
#
# That folder, relative to the prefix, is a fixed part of the tool's interface and does not depend
# on CMAKE_INSTALL_LIBDIR.
set(KESTREL_PLUGIN_INSTALL_DIR "lib/norvane/vexil")
# The folder of the descriptors in the build tree, for tests; its folder scripts/ contains their
# scripts.
set(KESTREL_BUILD_DESCRIPTOR_DIR ${PROJECT_BINARY_DIR}/plugins/descriptors)
# Removes the descriptors of an earlier configuration, because their sources may have been removed.
file(REMOVE_RECURSE ${KESTREL_BUILD_DESCRIPTOR_DIR})

function(kestrel_add_plugin name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "")
  # The process that loads the plug-in already has the library, so no path to it is needed.
  set_target_properties(${name} PROPERTIES SKIP_BUILD_RPATH ON INSTALL_RPATH "")
  target_link_libraries(${name} PRIVATE Kestrel::Kestrel kestrel_warnings kestrel_sanitizers)
  target_link_options(${name} PRIVATE
    "LINKER:--version-script=${PROJECT_SOURCE_DIR}/plugins/entry_points.map")
  set_target_properties(${name} PROPERTIES
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/plugins/entry_points.map)
  install(TARGETS ${name} LIBRARY DESTINATION ${KESTREL_PLUGIN_INSTALL_DIR} COMPONENT tool)
  set_property(GLOBAL APPEND PROPERTY KESTREL_PLUGINS ${name})
endfunction()

# kestrel_add_scripts(FILE...): adds executables that descriptors start. All of them are in one
# folder, both in the build tree and in the installed tree.
function(kestrel_add_scripts)
  foreach(script IN LISTS ARGN)
    configure_file(${script} ${KESTREL_BUILD_DESCRIPTOR_DIR}/scripts/${script} COPYONLY)
  endforeach()
  install(PROGRAMS ${ARGN} DESTINATION ${KESTREL_PLUGIN_INSTALL_DIR}/scripts COMPONENT tool)
endfunction()

# kestrel_add_descriptors(NAME...): configures descriptors from NAME.xml.in, once with the scripts
# of the build tree and once with those of the installed tree. A shell command cannot find the
# folder of its descriptor, so the folder of the scripts is inserted, escaped for XML and for single
# quotes.
function(kestrel_configure_descriptor name script_dir output)
  string(REPLACE "'" "'\\''" KESTREL_SCRIPT_DIR "${script_dir}")
  string(REPLACE "&" "&amp;" KESTREL_SCRIPT_DIR "${KESTREL_SCRIPT_DIR}")
  string(REPLACE "<" "&lt;" KESTREL_SCRIPT_DIR "${KESTREL_SCRIPT_DIR}")
  configure_file(${name}.xml.in ${output} @ONLY)
endfunction()

function(kestrel_add_descriptors)
  set(installed_dir ${CMAKE_INSTALL_PREFIX}/${KESTREL_PLUGIN_INSTALL_DIR})
  foreach(name IN LISTS ARGN)
    kestrel_configure_descriptor(${name} ${KESTREL_BUILD_DESCRIPTOR_DIR}/scripts
                                 ${KESTREL_BUILD_DESCRIPTOR_DIR}/${name}.xml)
    set(installed ${CMAKE_CURRENT_BINARY_DIR}/installed/${name}.xml)
    kestrel_configure_descriptor(${name} ${installed_dir}/scripts ${installed})
    install(FILES ${installed} DESTINATION ${KESTREL_PLUGIN_INSTALL_DIR} COMPONENT tool)
  endforeach()
endfunction()

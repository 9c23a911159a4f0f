# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# The manual pages, with the version and the plug-in folder of this build, and the reference of the
# public headers.
function(kestrel_add_manual_page page component)
  cmake_path(GET page EXTENSION LAST_ONLY extension)
  string(SUBSTRING ${extension} 1 -1 section)
  configure_file(docs/man/${page} ${PROJECT_BINARY_DIR}/man/${page} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/man/${page}
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()

foreach(page vexil.1 vexil-complete.1 vexil-doctor.1 vexil-explain.1 vexil-fleet.1 vexil-lint.1
             vexil-newplugin.1
             vexil-descriptor.5 vexil-template.5 vexil-formats.7)
  kestrel_add_manual_page(${page} tool)
endforeach()
foreach(page libkestrel.3 vexil-plugin.3)
  kestrel_add_manual_page(${page} development)
endforeach()

find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  configure_file(docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
  add_custom_target(reference
    COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
    COMMENT "Writing the reference of the public headers to ${PROJECT_BINARY_DIR}/reference"
    VERBATIM)
endif()

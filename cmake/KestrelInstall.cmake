# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Installs the library, its headers and the compiled programs; other files install the modules, the
# plug-ins, the manual pages and so on. Components: library, development, tool.
include(CMakePackageConfigHelpers)

install(TARGETS kestrel EXPORT KestrelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
          NAMELINK_COMPONENT development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

list(TRANSFORM KESTREL_TEST_ADAPTERS PREPEND include/)
install(FILES ${KESTREL_TEST_ADAPTERS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kestrel/testing COMPONENT development)

# The tool finds the library relative to itself, so the installed tree can be moved.
file(RELATIVE_PATH from_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(vexil PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
install(TARGETS vexil RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
foreach(program vexil-lint vexil-doctor vexil-explain)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
    list(APPEND author_tools ${program})
  endif()
endforeach()
file(RELATIVE_PATH from_libexec_to_lib
     ${CMAKE_INSTALL_FULL_LIBEXECDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(vexil-complete PROPERTIES INSTALL_RPATH "$ORIGIN/${from_libexec_to_lib}")
install(TARGETS vexil-complete RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT tool)

# Without a source folder, DIRECTORY creates an empty folder. If the folder were missing, the tool
# would report that.
install(DIRECTORY DESTINATION ${KESTREL_PLUGIN_INSTALL_DIR}/ext COMPONENT tool)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kestrel)
configure_package_config_file(
  cmake/KestrelConfig.cmake.in ${PROJECT_BINARY_DIR}/KestrelConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/KestrelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT KestrelTargets
  NAMESPACE Kestrel:: DESTINATION ${package_dir} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/KestrelConfig.cmake
              ${PROJECT_BINARY_DIR}/KestrelConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(ABSOLUTE_PATH pkgconfig_dir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
           OUTPUT_VARIABLE full_pkgconfig_dir)
# pkg-config omits the options for the folders that the compiler searches by itself. It recognizes
# them by their absolute paths, so the prefixes of the system are absolute. Every other prefix is
# relative, so that the installed tree can be moved.
if(CMAKE_INSTALL_PREFIX MATCHES "^/usr(/local)?$")
  set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
else()
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${full_pkgconfig_dir}
             OUTPUT_VARIABLE from_pkgconfig_to_prefix)
  set(pkgconfig_prefix "\${pcfiledir}/${from_pkgconfig_to_prefix}")
endif()
configure_file(cmake/kestrel.pc.in ${PROJECT_BINARY_DIR}/kestrel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kestrel.pc
  DESTINATION ${pkgconfig_dir} COMPONENT development)

add_custom_target(uninstall
  COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
          -DPLUGIN_DIR=${KESTREL_PLUGIN_INSTALL_DIR}
          -P ${PROJECT_SOURCE_DIR}/cmake/KestrelUninstall.cmake
  COMMENT "Removing what the latest installation has installed"
  VERBATIM)

set(installed_plugin_dir ${CMAKE_INSTALL_PREFIX}/${KESTREL_PLUGIN_INSTALL_DIR})
if(NOT KESTREL_PLUGIN_DIR STREQUAL installed_plugin_dir)
  message(STATUS "The tool looks for plug-ins in ${KESTREL_PLUGIN_DIR} (KESTREL_PLUGIN_DIR), "
                 "but they are installed to ${installed_plugin_dir}")
endif()

# An installed tree inside the build tree, for ./run and for the end-to-end and install tests.
set(KESTREL_STAGE_DIR ${PROJECT_BINARY_DIR}/stage)
get_property(plugins GLOBAL PROPERTY KESTREL_PLUGINS)
add_custom_target(stage ALL
  COMMAND ${CMAKE_COMMAND} -DBUILD=${PROJECT_BINARY_DIR} -DSTAGE=${KESTREL_STAGE_DIR}
          -P ${PROJECT_SOURCE_DIR}/cmake/KestrelStage.cmake
  COMMENT "Staging the installed tree"
  VERBATIM)
add_dependencies(stage kestrel vexil vexil-complete ${author_tools} ${plugins})
if(TARGET kestrel_fleet_rows)
  add_dependencies(stage kestrel_fleet_rows)
endif()

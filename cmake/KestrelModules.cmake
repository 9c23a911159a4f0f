# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# kestrel_add_module(NAME SOURCES SOURCE... LIBRARIES LIBRARY... LOADED SOURCE LINKED SOURCE): adds a
# module of the library, NAME.so, which the library loads when it needs it (see
# callspec/LibraryModule.h).
#
# LOADED, a source of the library, loads the module and is compiled with the module's path in
# KESTREL_<NAME>_MODULE. Programs that link the objects of the library instead of the library link
# kestrel_modules too, which contains all modules and, for each, the source LINKED.
set(KESTREL_MODULE_FOLDER kestrel${PROJECT_VERSION_MAJOR})

add_library(kestrel_modules STATIC EXCLUDE_FROM_ALL)
target_include_directories(kestrel_modules PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(kestrel_modules PRIVATE kestrel_warnings kestrel_sanitizers kestrel_coverage)

function(kestrel_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "LOADED;LINKED" "SOURCES;LIBRARIES")
  set(module_exports ${PROJECT_SOURCE_DIR}/cmake/module.map)
  set(objects kestrel_${name}_objects)
  add_library(${objects} OBJECT ${module_SOURCES})
  target_include_directories(${objects} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${objects} PRIVATE
    ${module_LIBRARIES} kestrel_warnings kestrel_sanitizers kestrel_coverage)

  # The folder of the module is beside the library, both in the build tree and in the installed tree.
  add_library(kestrel_${name} MODULE $<TARGET_OBJECTS:${objects}>)
  set_target_properties(kestrel_${name} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${KESTREL_MODULE_FOLDER}
    LINK_DEPENDS ${module_exports}
    OUTPUT_NAME ${name}
    PREFIX "")
  target_link_options(kestrel_${name} PRIVATE LINKER:--version-script=${module_exports})
  target_link_libraries(kestrel_${name} PRIVATE
    ${module_LIBRARIES} kestrel_sanitizers kestrel_coverage)
  if(PROJECT_IS_TOP_LEVEL)
    install(TARGETS kestrel_${name}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${KESTREL_MODULE_FOLDER} COMPONENT library)
  endif()

  target_sources(kestrel PRIVATE ${module_LOADED})
  string(TOUPPER ${name} upper_name)
  set_source_files_properties(${module_LOADED}
    TARGET_DIRECTORY kestrel
    PROPERTIES COMPILE_DEFINITIONS KESTREL_${upper_name}_MODULE="${KESTREL_MODULE_FOLDER}/${name}.so")
  add_dependencies(kestrel kestrel_${name})

  target_sources(kestrel_modules PRIVATE ${module_LINKED} $<TARGET_OBJECTS:${objects}>)
  target_link_libraries(kestrel_modules PUBLIC ${module_LIBRARIES})
endfunction()

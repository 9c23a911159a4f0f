# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Compiles several sources of a test program as one, which takes half the time. The sources of a
# group do not define the same names; scripts/group_sources.py finds the groups whenever CMake runs.

# kestrel_join_sources(TARGET): joins the sources in the folder of the calling file and below it. It
# is called after the last source is added. Does nothing unless KESTREL_JOIN_TEST_SOURCES is set.
function(kestrel_join_sources target)
  if(NOT KESTREL_JOIN_TEST_SOURCES)
    return()
  endif()
  get_target_property(all_sources ${target} SOURCES)
  foreach(source IN LISTS all_sources)
    cmake_path(ABSOLUTE_PATH source NORMALIZE)
    cmake_path(IS_PREFIX CMAKE_CURRENT_SOURCE_DIR ${source} is_below)
    if(is_below AND NOT source MATCHES "/support/")
      list(APPEND sources ${source})
    endif()
  endforeach()
  execute_process(
    COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/scripts/group_sources.py ${sources}
    OUTPUT_VARIABLE lines OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\n" ";" lines "${lines}")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^([0-9]+) (.*)$" is_line "${line}")
    set_property(SOURCE ${CMAKE_MATCH_2} PROPERTY UNITY_GROUP ${target}${CMAKE_MATCH_1})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()

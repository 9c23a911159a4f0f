# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Removes the files that the latest installation has listed in MANIFEST, and the folders that are
# empty afterwards. The environment variable DESTDIR is prepended to each path. PLUGIN_DIR is the
# folder of plug-ins, relative to the prefix.
if(NOT EXISTS ${MANIFEST})
  message(FATAL_ERROR "${MANIFEST} does not exist: nothing was installed from here")
endif()
file(STRINGS ${MANIFEST} files)

# MANIFEST does not list the folder "ext", because an installation puts no file into it.
set(folders)
foreach(file IN LISTS files)
  if(file MATCHES "^(.*/${PLUGIN_DIR})/[^/]*$")
    list(APPEND folders ${CMAKE_MATCH_1}/ext)
  endif()
  cmake_path(GET file PARENT_PATH folder)
  list(APPEND folders ${folder})
  file(REMOVE $ENV{DESTDIR}${file})
endforeach()

function(remove_empty_folders folder)
  file(GLOB contents LIST_DIRECTORIES TRUE $ENV{DESTDIR}${folder}/* $ENV{DESTDIR}${folder}/.*)
  cmake_path(GET folder PARENT_PATH parent)
  if(contents OR folder STREQUAL parent)
    return()
  endif()
  file(REMOVE_RECURSE $ENV{DESTDIR}${folder})
  remove_empty_folders(${parent})
endfunction()

list(REMOVE_DUPLICATES folders)
foreach(folder IN LISTS folders)
  remove_empty_folders(${folder})
endforeach()

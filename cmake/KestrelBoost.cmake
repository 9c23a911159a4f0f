# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Interface target with the parts of Boost that the library uses: the headers and Boost.Regex.
# Boost.Regex has been header-only since 1.76; before that, it had a shared library.
if(POLICY CMP0167)
  cmake_policy(SET CMP0167 NEW)  # Boost's own package file, not CMake's search
endif()
add_library(kestrel_boost INTERFACE)
find_package(Boost 1.71 REQUIRED)
target_link_libraries(kestrel_boost INTERFACE Boost::headers)
if(Boost_VERSION VERSION_LESS 1.76)
  find_package(Boost ${Boost_VERSION} EXACT REQUIRED COMPONENTS regex)
  target_link_libraries(kestrel_boost INTERFACE Boost::regex)
endif()

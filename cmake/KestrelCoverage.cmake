# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Interface target that counts which lines and branches run; empty unless KESTREL_COVERAGE is on.
# The counted code is not optimised, so that each branch in the source is also one in the program.
add_library(kestrel_coverage INTERFACE)
if(KESTREL_COVERAGE)
  add_library(kestrel_coverage_at_end STATIC ${CMAKE_CURRENT_LIST_DIR}/KestrelCoverage.cpp)
  set_target_properties(kestrel_coverage_at_end PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(kestrel_coverage INTERFACE --coverage -fprofile-update=atomic -O0)
  target_link_options(kestrel_coverage INTERFACE
    --coverage LINKER:--wrap=raise LINKER:--wrap=abort LINKER:--wrap=_exit
    LINKER:--undefined=__wrap_abort)  # libgcov, which comes last, calls it
  target_link_libraries(kestrel_coverage INTERFACE kestrel_coverage_at_end)
endif()

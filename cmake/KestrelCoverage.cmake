# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Interface target that counts which lines and branches run; empty unless KESTREL_COVERAGE is on. What
# is counted is not optimised, so that each branch of the source is one of the program.
add_library(kestrel_coverage INTERFACE)
if(KESTREL_COVERAGE)
  target_compile_options(kestrel_coverage INTERFACE --coverage -fprofile-update=atomic -O0)
  target_link_options(kestrel_coverage INTERFACE --coverage)
endif()

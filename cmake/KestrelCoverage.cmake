# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Interface target that counts which lines and branches run; empty unless KESTREL_COVERAGE is on.
add_library(kestrel_coverage INTERFACE)
if(KESTREL_COVERAGE)
  target_compile_options(kestrel_coverage INTERFACE --coverage)
  target_link_options(kestrel_coverage INTERFACE --coverage)
endif()

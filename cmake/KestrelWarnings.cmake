# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Interface target with the warnings that every source of this project is built with.
add_library(kestrel_warnings INTERFACE)
target_compile_options(kestrel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
  -Wformat=2 -Wundef -Wunused -Woverloaded-virtual
  $<$<BOOL:${KESTREL_WARNINGS_AS_ERRORS}>:-Werror>)

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# coverage.sh TREE: reports which lines and branches of the library the tests of a coverage build
# ran.
#
# Prints the totals, writes the lines that did not run to TREE/coverage.txt, and fails if a total is
# below its limit. Branches that only the compiler makes are not counted: those that are taken for
# exceptions, one at nearly every call, and those on lines without a condition, which mostly decide
# what is destroyed after an exception.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
tree=$1
condition='\b(if|while|for|switch|case|default)\b|[?]|&&|[|][|]'
gcovr --root . --object-directory "$tree" "$tree" \
  --filter 'metaobj/' --filter 'callspec/' --filter 'autocli/' \
  --exclude-throw-branches --exclude-branches-by-pattern "(?!.*($condition))" \
  --txt "$tree/coverage.txt" --html-details "$tree/coverage.html" \
  --print-summary --fail-under-line 98 --fail-under-branch 93

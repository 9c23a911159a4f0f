#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# coverage.sh TREE: reports which lines and branches of the library the tests of a coverage build
# ran.
#
# Prints the totals, writes the lines that did not run to TREE/coverage.txt, and fails if a total is
# below its limit. Branches that are taken only for exceptions are not counted, because the compiler
# adds one to nearly every call.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
tree=$1
gcovr --root . --object-directory "$tree" "$tree" \
  --filter 'metaobj/' --filter 'callspec/' --filter 'autocli/' \
  --exclude-throw-branches --txt "$tree/coverage.txt" --html-details "$tree/coverage.html" \
  --print-summary --fail-under-line 97 --fail-under-branch 90

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# coverage.sh TREE: what the tests that ran in a coverage build reached of the library's sources.
#
# Prints the totals, leaves the lines that were missed in TREE/coverage.txt, and fails below the
# limits. A branch that only an exception takes is not counted: the compiler makes one of nearly
# every call.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
tree=$1
gcovr --root . --object-directory "$tree" "$tree" \
  --filter 'metaobj/' --filter 'callspec/' --filter 'autocli/' \
  --exclude-throw-branches --txt "$tree/coverage.txt" --html-details "$tree/coverage.html" \
  --print-summary --fail-under-line 97 --fail-under-branch 90

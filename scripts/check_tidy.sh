#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Checks that each check in .clang-tidy reports the mistake that tests/lint/tidy contains for it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
found=$(clang-tidy --quiet --header-filter='Mistakes\.h' tests/lint/tidy/Mistakes.cpp -- \
  -std=c++17 -w 2>/dev/null || true)
blind=$(clang-tidy --list-checks | sed -n 's/^ \+//p' | while read -r check; do
  grep -qF "[$check" <<<"$found" || grep -qF ",$check" <<<"$found" || echo "$check"
done)
if [[ -n $blind ]]; then
  printf '%s\n' "These checks find nothing in tests/lint/tidy:" "$blind" >&2
  exit 1
fi

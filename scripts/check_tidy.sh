#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Checks that each check in .clang-tidy reports the mistake that tests/lint/tidy contains for it, and
# that clang-tidy, called as scripts/check_clang.sh does, reports the warnings of clang itself.
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

found=$(clang-tidy --quiet --checks=clang-diagnostic-\* tests/lint/tidy/Mistakes.cpp -- \
  -std=c++17 -Wall -Werror 2>/dev/null || true)
if ! grep -q 'Mistakes\.h:.* \[clang-diagnostic-unused-variable' <<<"$found"; then
  echo "clang-tidy does not report a warning of clang in a header." >&2
  exit 1
fi

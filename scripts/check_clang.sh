#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_clang.sh [EXPRESSION]: has clang and clang-tidy check our own sources, or those whose path
# matches the regular expression. Every warning of clang and every finding is an error.
#
# clang-tidy runs clang's front end, so it reports clang's warnings too; nothing is compiled to
# objects. The options of each source are those of the preset "tidy".
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

mkdir -p build/tidy
quietly build/tidy/configure.log cmake --preset tidy
mapfile -t sources < <(sed -n 's/^  "file": "\(.*\)",\{0,1\}$/\1/p' build/tidy/compile_commands.json |
  sort -u | grep -E -e "${1:-.}")
[[ ${#sources[@]} -gt 0 ]] || fail "No source matches ${1:-.}"

# The number of suppressed warnings is all that clang-tidy prints about a source without findings.
status=0
printf '%s\0' "${sources[@]}" |
  xargs -0 -n 1 -P "$(nproc)" clang-tidy -p build/tidy --quiet \
    --checks=clang-diagnostic-\* --warnings-as-errors=\* 2>build/tidy/errors || status=$?
grep -vE '^[0-9]+ warnings? (and [0-9]+ errors? )?generated\.$' build/tidy/errors >&2 || true
[[ $status -eq 0 ]] || fail "clang or clang-tidy has findings."
say "clang and clang-tidy: ${#sources[@]} sources without a finding"

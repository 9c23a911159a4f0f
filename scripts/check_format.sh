#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Checks that every C++ file is formatted according to .clang-format; `--fix` formats them.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run --Werror)
[[ ${1:-} != --fix ]] || mode=(-i)
find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 -n 50 -P "$(nproc)" clang-format "${mode[@]}"

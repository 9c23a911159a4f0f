#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_static.sh [--analyzer]: has cppcheck look for mistakes in the library, the tool, the plug-ins
# and the companion programs.
#
# Findings that are not mistakes are in scripts/cppcheck.txt, each with its reason. --analyzer also
# compiles the library and the tool with gcc's -fanalyzer, which takes minutes. Up to gcc 12 it does
# not follow exceptions and member initialisers, so its warnings about uninitialised values are off.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

run_cppcheck() {
  cppcheck -j "$(nproc)" --quiet --error-exitcode=1 --std=c++17 --library=posix \
    --enable=warning,performance,portability --inline-suppr \
    --suppressions-list=<(grep '^[^#]' scripts/cppcheck.txt) \
    -I include -I . -D__linux__ -D__GNUC__=12 -DKESTREL_API= \
    --template='{file}:{line}: {severity}: {message} [{id}]' \
    metaobj callspec autocli platform vexil plugins tools
}

run_analyzer() {
  local tree=build/analyzer
  rm -rf "$tree"
  cmake --preset release -B "$tree" -DKESTREL_BUILD_PLUGINS=OFF -DKESTREL_WARNINGS_AS_ERRORS=ON \
    -DCMAKE_CXX_FLAGS="-fanalyzer -Wno-analyzer-use-of-uninitialized-value" >/dev/null
  cmake --build "$tree" --target kestrel vexil
}

case ${1:-} in
  "") run_cppcheck ;;
  --analyzer) run_cppcheck && run_analyzer ;;
  *) sed -n '5,/^set/{/^#/s/^# \{0,1\}//p}' "$0" ;;
esac

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_static.sh [--analyzer]: has cppcheck look for mistakes in the library, the tool, the plug-ins
# and the companion programs.
#
# Findings that are not mistakes are in scripts/cppcheck.txt, each with its reason. --analyzer also
# compiles everything that is installed with gcc's -fanalyzer, which takes far longer than a build.
# Up to gcc 12 it does not follow exceptions and member initialisers, so its warnings about
# uninitialised values are off. It also assumes that operator new can return a null pointer, and that
# a vector can contain one after elements were added, so its warnings about null pointers are off.
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
  local off=(-Wno-analyzer-{use-of-uninitialized-value,null-dereference,possible-null-dereference,possible-null-argument})
  rm -rf "$tree"
  cmake --preset release -B "$tree" -DKESTREL_WARNINGS_AS_ERRORS=ON \
    -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
    -DCMAKE_CXX_FLAGS="-fanalyzer ${off[*]}" >/dev/null
  cmake --build "$tree"
}

case ${1:-} in
  "") run_cppcheck ;;
  --analyzer) run_cppcheck && run_analyzer ;;
  *) sed -n '5,/^set/{/^#/s/^# \{0,1\}//p}' "$0" ;;
esac

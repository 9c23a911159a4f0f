#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_static.sh [--analyzer]: has cppcheck look for mistakes in the library, the tool, the plug-ins
# and the companion programs.
#
# Findings that are not mistakes are in scripts/cppcheck.txt, each with its reason. --analyzer also
# has gcc's -fanalyzer check everything that is installed, which takes far longer than a build; a
# source that takes longer than four minutes is left out. Up to gcc 12 it does not follow exceptions
# and member initialisers, so its warnings about uninitialised values are off. It also assumes that
# operator new can return a null pointer, that a vector can contain one after elements were added,
# and that a buffer has not grown, so its warnings about null pointers are off.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

max_seconds=240

run_cppcheck() {
  cppcheck -j "$(nproc)" --quiet --error-exitcode=1 --std=c++17 --library=posix \
    --enable=warning,performance,portability --inline-suppr \
    --suppressions-list=<(grep '^[^#]' scripts/cppcheck.txt) \
    -I include -I . -D__linux__ -D__GNUC__=12 -DKESTREL_API= \
    --template='{file}:{line}: {severity}: {message} [{id}]' \
    metaobj callspec autocli platform vexil plugins tools
}

# Prints the warnings of the analyzer in a log, except for the false ones about `_M_copy`, the
# function of the C++ library that copies a std::map or a std::set.
analyzer_warnings() {
  awk 'function flush() { if (warning !~ /_M_copy/) printf "%s", warning; warning = "" }
    /^\[[0-9]+\/[0-9]+\]|^FAILED/ { flush(); is_warning = 0 }
    / warning: / { flush(); is_warning = 1 }
    is_warning { warning = warning $0 "\n" }
    END { flush() }' "$1"
}

run_analyzer() {
  local tree=build/analyzer log=build/analyzer.log warnings assumptions
  assumptions=(-Wno-analyzer-{use-of-uninitialized-value,null-argument,null-dereference}
    -Wno-analyzer-possible-null-{argument,dereference})
  rm -rf "$tree"
  cmake --preset release -B "$tree" -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="timeout;$max_seconds" \
    -DCMAKE_CXX_FLAGS="-fanalyzer ${assumptions[*]}" >/dev/null
  # A source that takes too long fails, and so does what needs it.
  cmake --build "$tree" -- -k 0 >"$log" 2>&1 || say "Not analysed in $max_seconds seconds:
$(sed -n 's/^FAILED: //p' "$log")"
  ! grep ' error: ' "$log" || return 1
  warnings=$(analyzer_warnings "$log")
  [[ -z $warnings ]] || fail "$warnings"
}

case ${1:-} in
  "") run_cppcheck ;;
  --analyzer) run_cppcheck && run_analyzer ;;
  *) sed -n '5,/^set/{/^#/s/^# \{0,1\}//p}' "$0" ;;
esac

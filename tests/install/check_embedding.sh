#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_embedding.sh SOURCE TOOL WORK: builds a project that contains Kestrel as a part. The project
# consists of a program and a plug-in. TOOL loads the plug-in.
set -euo pipefail

source=$1 tool=$2 work=$3

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

rm -rf "$work"
mkdir -p "$work"
{
  cmake -G Ninja -S "$source/tests/install/embedding" -B "$work/build" \
    -DCMAKE_CXX_FLAGS=-O0 -DKESTREL_SOURCE="$source" && cmake --build "$work/build"
} >"$work/log" 2>&1 || fail "$(tail -n 40 "$work/log")"

"$work/build/program" >"$work/printed" || fail "the program fails"
grep -q '^built against ' "$work/printed" || fail "the program prints: $(<"$work/printed")"

printed=$("$tool" --plugin "$work/build/consumer.so" consumer greet --name world)
[[ $printed == *"Text: Hello, world!"* ]] || fail "the plug-in prints: $printed"

# Installing the project installs nothing of Kestrel.
DESTDIR=$work/root cmake --install "$work/build" --prefix /usr >"$work/log" 2>&1 || fail "$(<"$work/log")"
installed=$(cd "$work/root" && find . -type f)
[[ $installed == ./usr/bin/program ]] || fail "the project installs: $installed"

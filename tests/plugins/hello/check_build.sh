#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_build.sh SOURCE STAGE WORK: follows the guide with a copy of the installed tree. The script
# configures, builds and installs the example from a separate folder, and runs its command.
set -euo pipefail

source=$1 stage=$2 work=$3

rm -rf "$work"
mkdir -p "$work"
cp -a "$stage" "$work/prefix"
cp -a "$source" "$work/hello"
cd "$work"

if ! {
  cmake -S hello -B build -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS=-Werror -DCMAKE_SHARED_LINKER_FLAGS=-Wl,-z,defs &&
    cmake --build build && cmake --install build --prefix "$work/installed"
} >build.log 2>&1; then
  cat build.log >&2
  exit 1
fi

expected="Greeting:
   Text: Hello, Ada!
   Bytes: 11"
printed=$(prefix/bin/vexil --plugin-dir "$work/installed/lib/norvane/vexil" \
  hello greet --name Ada --loud 2>errors)
if [[ $printed != "$expected" || -s errors ]]; then
  printf 'expected: %s\nbut got: %s\n' "$expected" "$printed" >&2
  cat errors >&2
  exit 1
fi

# Apart from weak symbols, only the entry point is exported, so that names of plug-ins cannot clash.
names=$(nm --dynamic --defined-only --extern-only installed/lib/norvane/vexil/hello.so |
  awk '$2 != "W" && $2 != "V" && $2 != "u" { print $3 }')
if [[ $names != AutoCli_RegisterNamespaces ]]; then
  printf 'The plug-in shows more than its entry point:\n%s\n' "$names" >&2
  exit 1
fi

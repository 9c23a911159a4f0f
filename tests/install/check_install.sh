#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_install.sh cmake|pkg-config STAGE WORK: builds the consumer's program and plug-in against an
# installed tree, and runs them.
#
# Copies the tree to WORK first, because installed files must not depend on their location.
set -euo pipefail

way=$1 stage=$2 work=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
prefix=$work/prefix
source=$work/source
build=$work/build

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

expect_text() {
  local what=$1 expected=$2 actual=$3
  [[ $actual == "$expected" ]] ||
    fail "$what"$'\n'"expected: ${expected@Q}"$'\n'"but got:  ${actual@Q}"
}

rm -rf "$work"
mkdir -p "$build"
cp -a "$stage" "$prefix"
cp -a "$here/consumer" "$source"
compiler=${CXX:-c++}
version=$(sed -n 's/^#define KESTREL_VERSION_STRING "\(.*\)"/\1/p' "$prefix/include/kestrel/Version.h")

build_by_cmake() {
  cmake -S "$source" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/build.log" 2>&1 &&
    cmake --build "$build" >>"$work/build.log" 2>&1
}

build_by_pkg_config() {
  local pc_files flags
  pc_files=$(dirname "$(find "$prefix" -name kestrel.pc)")
  kestrel() { PKG_CONFIG_PATH=$pc_files pkg-config "$@" kestrel; }
  expect_text "pkg-config's version" "$version" "$(kestrel --modversion)"
  [[ -d $(kestrel --variable=plugindir)/ext ]] || fail "pkg-config's plugindir has no ext"
  read -ra flags < <(kestrel --cflags --libs)
  {
    "$compiler" -std=c++17 "$source/main.cpp" -o "$build/program" "${flags[@]}" \
      "-Wl,-rpath,$(kestrel --variable=libdir)" &&
      "$compiler" -std=c++17 -shared -fPIC -fvisibility=hidden "$source/ConsumerPlugin.cpp" \
        -o "$build/consumer.so" "${flags[@]}"
  } >"$work/build.log" 2>&1
}

"build_by_${way//-/_}" || {
  cat "$work/build.log" >&2
  fail "the consumer does not build by $way"
}

expect_text "what the program prints" "built against $version
{'Text' => 'hello', 'Times' => '3', }
refused: Invalid name specified for MetaStruct: not a name" "$("$build/program")"

status=0
printed=$("$prefix/bin/vexil" --plugin "$build/consumer.so" consumer greet --name world \
  2>"$work/errors") || status=$?
expect_text "the tool's exit status" 0 "$status"
expect_text "the tool's standard error" "" "$(<"$work/errors")"
expect_text "what the plug-in's command prints" "Greeting:
   Text: Hello, world!" "$printed"

library=$(ldd "$prefix/bin/vexil" | awk '/libkestrel/ { print $3 }')
expect_text "the library that the moved tool loads" \
  "$(realpath "$prefix")" "$(realpath "$library" | sed 's|/lib/.*||')"

# The package files must not name private dependencies or the build tree.
leaks=$(grep -rnE 'Boost|LibXml2|kestrel_|zoluser|tessalibs|auditTlsParams' \
  "$prefix"/lib*/cmake "$prefix"/lib*/pkgconfig || true)
expect_text "private dependencies in the package files" "" "$leaks"
paths=$(grep -rlF "$(dirname "$stage")" "$prefix"/lib*/cmake "$prefix"/lib*/pkgconfig || true)
expect_text "package files that name the build tree" "" "$paths"

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_tarball.sh BUILD WORK: installs a build tree into the folder of an archive, runs the tool
# where the archive is unpacked, and removes everything with the script of the target "uninstall".
set -euo pipefail

build=$1 work=$2

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

rm -rf "$work"
mkdir -p "$work/unpacked"

export DESTDIR=$work/root
cmake --install "$build" --prefix /opt/kestrel >"$work/log" 2>&1 || fail "$(<"$work/log")"
tar -C "$work/root" -c opt | tar -C "$work/unpacked" -x

# The tool runs where the archive is unpacked, and does not report a missing folder.
prefix=$work/unpacked/opt/kestrel
"$prefix/bin/vexil" --plugin-dir "$prefix/lib/norvane/vexil" vexil plugin list >"$work/plugins" \
  2>"$work/errors" || fail "the tool fails: $(<"$work/errors")"
[[ ! -s $work/errors ]] || fail "the tool complains: $(<"$work/errors")"
grep -q "^host\.so " "$work/plugins" || fail "the tool lacks plug-ins: $(<"$work/plugins")"

# Files that were not installed stay, and so do the folders that contain them.
touch "$work/root/opt/kestrel/bin/other"
cmake -DMANIFEST="$build/install_manifest.txt" -DPLUGIN_DIR=lib/norvane/vexil \
  -P "${BASH_SOURCE[0]%/*}/../../cmake/KestrelUninstall.cmake" >"$work/log" 2>&1 ||
  fail "$(<"$work/log")"
left=$(cd "$work/root" && find . -mindepth 1 | sort | tr '\n' ' ')
[[ $left == "./opt ./opt/kestrel ./opt/kestrel/bin ./opt/kestrel/bin/other " ]] ||
  fail "the target \"uninstall\" leaves: $left"

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_packages.sh BUILD WORK: builds the Debian packages of a build tree and checks their contents.
set -euo pipefail

build=$1 work=$2

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

# package NAME: prints the path of the package, of which there must be exactly one.
package() {
  local files=("$work/$1"_[0-9]*_*.deb)
  [[ ${#files[@]} -eq 1 && -e ${files[0]} ]] || fail "no package $1 in $work"
  echo "${files[0]}"
}

# contains NAME PATTERN...: fails unless each pattern matches a path in the package.
contains() {
  local name=$1 paths pattern
  shift
  paths=$(dpkg-deb --contents "$(package "$name")" | awk '{ print $6 }')
  for pattern in "$@"; do
    grep -qxE -- "\.$pattern" <<<"$paths" || fail "$name lacks $pattern:"$'\n'"$paths"
  done
}

# depends NAME PATTERN: fails unless the pattern matches the dependencies of the package.
depends() {
  local line
  line=$(dpkg-deb --field "$(package "$1")" Depends)
  grep -qE -- "$2" <<<"$line" || fail "$1 does not depend on $2, but on: $line"
}

rm -rf "$work"
mkdir -p "$work"
cpack --config "$build/CPackConfig.cmake" -D CPACK_PACKAGING_INSTALL_PREFIX=/usr -B "$work" \
  >"$work/log" 2>&1 || fail "cpack fails:"$'\n'"$(<"$work/log")"

contains libkestrel '/usr/lib/.*libkestrel\.so\.[0-9]+' '/usr/lib/.*libkestrel\.so\.[0-9.]+' \
  '/usr/lib/(.*/)?kestrel[0-9]+/expression\.so'
contains libkestrel-dev '/usr/lib/.*libkestrel\.so' '/usr/include/kestrel/kestrel\.h' \
  '/usr/lib/.*KestrelConfig\.cmake' '/usr/lib/.*/kestrel\.pc' \
  '/usr/share/man/man3/vexil-plugin\.3'
contains vexil '/usr/bin/vexil' '/usr/bin/vexil-lint' '/usr/share/man/man1/vexil-lint\.1' \
  '/usr/share/bash-completion/completions/vexil-lint' \
  '/usr/lib/norvane/vexil/ext/' '/usr/lib/norvane/vexil/host\.so' \
  '/usr/libexec/vexil-complete' '/usr/share/bash-completion/completions/vexil' \
  '/usr/share/zsh/.*/_vexil' '/usr/share/fish/vendor_completions\.d/vexil\.fish' \
  '/usr/share/man/man1/vexil-complete\.1' \
  '/usr/share/man/man1/vexil\.1' '/usr/share/man/man5/vexil-descriptor\.5'
depends libkestrel-dev '^libkestrel \(= '
depends vexil 'libkestrel \(= '
depends libkestrel 'libc6'

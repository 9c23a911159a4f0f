#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_packages.sh: builds the Debian packages and checks the reports of lintian, blhc and
# hardening-check, the symbols and types that the library exports, and the contents of the packages.
# Installs, tests, upgrades, removes and purges them in a throw-away root. Also builds them a second
# time, in another folder and with different settings, and checks that the results are equal.
#
#   --built FOLDER    only checks packages that build_packages.sh has built
#
# Every source is compiled in both builds, unless the environment names a compiler cache, as .ci/run
# does: then the cache serves both. In either case, no package may contain the path of its build
# folder.
#
# The throw-away root is an overlay of this machine's root folder; nothing outside the overlay
# changes. Making it needs the rights of root.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh
ensure_packages build test package

work=$(mktemp -d)
second=''
cleanup() {
  if [[ -n $second ]]; then
    kill -- "-$second" 2>/dev/null || true
    wait "$second" || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT
multiarch=$(dpkg-architecture --query DEB_HOST_MULTIARCH)

# package NAME: prints the path of the package.
package() { echo "$built"/"$1"_*.deb; }

build_again() {
  export TZ=Asia/Tokyo LC_ALL=C.UTF-8
  export DEB_BUILD_OPTIONS=nocheck  # the first build runs the tests
  umask 027
  mkdir -p "$1"
  scripts/build_packages.sh "$1"
}

# Starts the second build in the background, in a process group of its own.
start_second_build() {
  set -m
  build_again "$again" >"$work/second" 2>&1 </dev/null &
  second=$!
  set +m
}

wait_for_second_build() {
  local status=0
  wait "$second" || status=$?
  second=''
  [[ $status -eq 0 ]] || fail "The second build fails: $(<"$work/second")"
}

check_paths() {
  local deb
  for deb in "$built"/*.deb; do
    rm -rf "$work/extracted"
    dpkg-deb --raw-extract "$deb" "$work/extracted"
    ! grep -rlF -e "$built" "$work/extracted" >&2 || fail "${deb##*/} contains the folder of its build."
  done
  say "paths: no package contains the folder of its build"
}

check_reproducible() {
  (cd "$built" && sha256sum ./*.deb ./*.dsc ./*.tar.xz) >"$work/sums"
  (cd "$again" && sha256sum --check --quiet "$work/sums") ||
    fail "Two builds of the packages differ."
  say "reproducible: $(wc -l <"$work/sums") files are equal in two builds"
}

check_lintian() {
  lintian --allow-root --pedantic --display-info --tag-display-limit 0 "$built"/*.changes \
    >"$work/lintian" || true
  sort "$work/lintian" >&2
  ! grep -qE '^[EWI]:' "$work/lintian" || fail "lintian has complaints."
  say "lintian: no error, no warning, no information"
}

check_build_log() {
  blhc "$built/log" >&2 || fail "blhc has complaints."
  local flag compilations flags=(-fstack-clash-protection)
  [[ $multiarch != x86_64* ]] || flags+=(-fcf-protection)
  compilations=$(grep -E ' -c /?.*\.cpp$' "$built/log") || fail "The log has no compilation."
  for flag in "${flags[@]}"; do
    ! grep -vqF -e " $flag " <<<"$compilations" || fail "A source is compiled without $flag."
  done
  say "blhc: silent; all $(wc -l <<<"$compilations") sources are compiled with ${flags[*]}"
}

check_hardening() {
  local file name
  for name in libkestrel1 vexil; do
    dpkg-deb --extract "$(package "$name")" "$work/root"
  done
  for file in "usr/lib/$multiarch/libkestrel.so.1" usr/lib/norvane/vexil/host.so; do
    hardening-check --nocfprotection "$work/root/$file" >"$work/hardening" ||
      fail "${file##*/} is not hardened: $(<"$work/hardening")"
  done
  # The few functions of the C library that these programs call have nothing to fortify.
  for file in usr/bin/vexil usr/libexec/vexil-complete; do
    hardening-check --nocfprotection --nofortify "$work/root/$file" >"$work/hardening" ||
      fail "${file##*/} is not hardened: $(<"$work/hardening")"
  done
  say "hardening-check: the library, host.so and the programs pass"
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

check_contents() {
  contains libkestrel1 "/usr/lib/$multiarch/libkestrel\.so\.1" \
    "/usr/lib/$multiarch/kestrel1/expression\.so" "/usr/lib/$multiarch/kestrel1/xml\.so"
  contains libkestrel-dev "/usr/lib/$multiarch/libkestrel\.so" '/usr/include/kestrel/kestrel\.h' \
    "/usr/lib/$multiarch/cmake/Kestrel/KestrelConfig\.cmake" \
    "/usr/lib/$multiarch/pkgconfig/kestrel\.pc" '/usr/share/man/man3/vexil-plugin\.3\.gz'
  contains vexil '/usr/bin/vexil' '/usr/lib/norvane/vexil/ext/' '/usr/lib/norvane/vexil/host\.so' \
    '/usr/libexec/vexil-complete' '/usr/share/bash-completion/completions/vexil' \
    '/usr/share/fish/vendor_completions.d/vexil\.fish' '/usr/share/zsh/vendor-completions/_vexil' \
    '/usr/share/man/man1/vexil\.1\.gz' '/usr/share/man/man5/vexil-descriptor\.5\.gz'
  contains vexil-tools '/usr/bin/vexil-fleet' '/usr/share/kestrel/fleet/vexil_fleet/main\.py' \
    "/usr/lib/$multiarch/kestrel/fleet-rows\.so" '/usr/share/man/man1/vexil-fleet\.1\.gz' \
    '/usr/share/bash-completion/completions/vexil-fleet' '/usr/bin/vexil-newplugin' \
    '/usr/share/bash-completion/completions/vexil-explain' \
    '/usr/share/fish/vendor_completions.d/vexil-explain\.fish' \
    '/usr/share/zsh/vendor-completions/_vexil-explain' \
    '/usr/share/kestrel/newplugin/native/Plugin\.cpp' '/usr/share/xml/kestrel/catalog\.xml' \
    '/usr/share/ansible/collections/ansible_collections/kestrel/vexil/plugins/modules/command\.py'
  contains kestrel-doc '/usr/share/doc/.*/command-line\.md(\.gz)?' \
    '/usr/share/doc/.*/reference/index\.html' '/usr/share/doc-base/.*kestrel.*'
  depends libkestrel-dev '^libkestrel1 \(= '
  depends vexil 'libkestrel1 \(>= '
  depends vexil-tools 'vexil \(= '
  depends libkestrel1 'libboost-regex'
  say "contents and dependencies: as expected"
}

# as_version VERSION FOLDER: makes packages of another version with the same files. One package has
# an additional file, which an upgrade has to remove.
as_version() {
  local version=$1 folder=$2 name
  mkdir -p "$folder"
  for name in libkestrel1 libkestrel-dev vexil vexil-tools; do
    rm -rf "$work/raw"
    dpkg-deb --raw-extract "$(package "$name")" "$work/raw"
    sed -i -E "s/^(Version: ).*/\1$version/; s/((libkestrel1|vexil) \(>?= )[^)]*/\1$version/g" \
      "$work/raw/DEBIAN/control"
    [[ $name != vexil ]] || echo "$version" >"$work/raw/usr/lib/norvane/vexil/of-$version"
    dpkg-deb --root-owner-group -Znone --build "$work/raw" "$folder/${name}_${version}.deb" >/dev/null
  done
}

check_life() {
  as_version 0.9.0-1 "$work/earlier"
  as_version 1.0.1-1 "$work/later"
  mkdir "$work/overlay"
  env -u CMAKE_CXX_COMPILER_LAUNCHER unshare --mount \
    scripts/try_packages.sh "$work/earlier" "$built" "$work/later" "$work/overlay"
}

check_built() {
  [[ $EUID -eq 0 ]] || fail "The packages are installed in a throw-away root, which needs root."
  unshare --mount true || fail "The throw-away root needs a machine that may mount file systems."
  check_lintian
  check_build_log
  check_hardening
  scripts/check_abi.sh "$built"
  check_contents
  check_paths
  check_life
}

built=$PWD/build/packages
again=$PWD/build/packages-again/another/longer/place
case ${1:-} in
  '')
    scripts/build_packages.sh "$built"
    start_second_build
    check_built
    wait_for_second_build
    check_reproducible
    ;;
  --built) built=$(realpath "$2") && check_built ;;
  *) sed -n '5,/^set/{/^#/s/^# \{0,1\}//p}' "$0" ;;
esac

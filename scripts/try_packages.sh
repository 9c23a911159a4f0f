#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# try_packages.sh EARLIER BUILT LATER WORK: tests the life cycle of the packages in an overlay of
# this machine's root, mounted below WORK: installs those in EARLIER, upgrades to those in BUILT and
# runs the tests in debian/tests, upgrades to those in LATER, removes and purges them. Afterwards no
# file of the packages may be left.
#
# check_packages.sh starts this script in a mount namespace of its own. When that namespace ends,
# the overlay is unmounted.
set -euo pipefail

work=$4

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

mount -t tmpfs none "$work"
mkdir "$work/upper" "$work/scratch" "$work/root" "$work/files"
mount -t overlay overlay -o "lowerdir=/,upperdir=$work/upper,workdir=$work/scratch" "$work/root"
mount --bind /proc "$work/root/proc"
mount --bind /dev "$work/root/dev"
mount --bind "$work/files" "$work/root/mnt"
mkdir "$work/files/earlier" "$work/files/built" "$work/files/later" "$work/files/source"
cp "$1"/*.deb "$work/files/earlier"
cp "$2"/*.deb "$work/files/built"
cp "$3"/*.deb "$work/files/later"
mount --bind --options ro "$PWD" "$work/root/mnt/source"

inside() { chroot "$work/root" env LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"; }

# What the packages add to the root or remove from it: paths that the overlay has and this machine
# does not, or the reverse, without the database of dpkg, caches and logs.
list_files() {
  (cd "$work/upper" && find . -mindepth 1 ! -path './var/lib/dpkg*' ! -path './var/cache*' \
    ! -path './var/log*' ! -path './mnt*' | sort | while IFS= read -r path; do
    [[ -e $path && -e /$path && ! -c $path ]] || echo "$path"
  done)
}

# install_packages FOLDER: installs, and checks that the tool runs and that no other version's file
# is left.
install_packages() {
  local version
  inside sh -c "cd /mnt/$1 && exec dpkg --install libkestrel1_*.deb libkestrel-dev_*.deb \
    vexil_*.deb vexil-tools_*.deb" >"$work/log" 2>&1 || fail "$(<"$work/log")"
  version=$(inside dpkg-query --show vexil | cut -f 2)
  [[ $(dpkg-deb --field "$work/files/$1"/vexil_*.deb Version) == "$version" ]] ||
    fail "version $version is installed, not that of $1"
  inside vexil vexil command list >"$work/commands" 2>"$work/errors" || fail "the tool fails"
  [[ ! -s $work/errors ]] || fail "the tool complains: $(<"$work/errors")"
  grep -q '^storage\.mount ' "$work/commands" || fail "the tool lacks its plug-ins"
  (cd "$work/root/usr/lib/norvane/vexil" && find . -name 'of-*' ! -name "of-$version") >"$work/old"
  [[ ! -s $work/old ]] || fail "files of an earlier version are left: $(<"$work/old")"
}

# Runs the tests of the installed packages as autopkgtest does.
run_tests() {
  local test
  sed -n 's/^Tests: //p' debian/tests/control >"$work/tests"
  while read -r test; do
    inside sh -ec "rm -rf /tmp/autopkgtest; mkdir -p /tmp/autopkgtest; cd /mnt/source
      AUTOPKGTEST_TMP=/tmp/autopkgtest exec debian/tests/$test" >"$work/log" 2>&1 </dev/null ||
      fail "debian/tests/$test fails: $(tail -n 40 "$work/log")"
    inside rm -rf /tmp/autopkgtest
    echo "debian/tests/$test: passed" >&2
  done <"$work/tests"
}

list_files >"$work/before"
install_packages earlier
install_packages built
run_tests
install_packages later
packages=(vexil-tools vexil libkestrel-dev libkestrel1)
inside dpkg --remove "${packages[@]}" >"$work/log" 2>&1 || fail "$(<"$work/log")"
! inside sh -c 'command -v vexil' >/dev/null || fail "the tool is left"
inside dpkg --purge "${packages[@]}" >"$work/log" 2>&1 || fail "$(<"$work/log")"
list_files >"$work/after"
diff "$work/before" "$work/after" >&2 || fail "purged packages left these files"
echo "life: installed, upgraded twice, removed, purged; nothing is left" >&2

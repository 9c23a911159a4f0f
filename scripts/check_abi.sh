#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_abi.sh [--update] FOLDER: compares the library in the packages in FOLDER with
# abi/libkestrel.abi, which describes the symbols and types of the latest release.
#
# The descriptions are read from the debugging symbols, for the types of the public headers only and
# without those of other libraries, which abi/suppressions lists. Any difference is an error.
# --update writes the present description instead. Increase the MINOR version for an addition, and
# the MAJOR version for any other difference.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

update=false
[[ ${1-} != --update ]] || { update=true && shift; }
[[ $# -eq 1 ]] || fail "Usage: check_abi.sh [--update] FOLDER"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for name in libkestrel1 libkestrel1-dbgsym libkestrel-dev; do
  dpkg-deb --extract "$1/${name}"_*.deb "$work"
done
library=$(realpath "$work"/usr/lib/*/libkestrel.so.1)

abidw --suppressions abi/suppressions --debug-info-dir "$work/usr/lib/debug" --headers-dir "$work/usr/include" \
  --drop-private-types --no-corpus-path --no-comp-dir-path --no-show-locs \
  --out-file "$work/libkestrel.abi" "$library"
if $update; then
  cp "$work/libkestrel.abi" abi/libkestrel.abi
  exit
fi

status=0
abidiff --no-show-locs abi/libkestrel.abi "$work/libkestrel.abi" >&2 || status=$?
[[ $status -eq 0 ]] || fail "The exported symbols or types have changed (abidiff: status $status)."
say "abidiff: no difference from abi/libkestrel.abi"

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# build_packages.sh [FOLDER [VERSION]]: builds the source package and the Debian packages of the
# files under version control into FOLDER (default: build/packages), as version VERSION (default:
# that of debian/changelog).
#
# DEB_BUILD_OPTIONS=nocheck leaves out the tests. What dpkg-buildpackage prints is in FOLDER/log.
set -euo pipefail
umask 022  # the modes of the files are in the packages

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh
ensure_packages build test package

mkdir -p "${1:-build/packages}"
folder=$(realpath "${1:-build/packages}")
version=${2:-$(dpkg-parsechangelog --show-field Version)}
epoch=$(dpkg-parsechangelog --show-field Timestamp)
source=$folder/kestrel-${version%-*}
archive=$folder/kestrel_${version%-*}.orig.tar.xz

rm -rf "${folder:?}"/*
mkdir "$source"
git ls-files -z --cached --others --exclude-standard | tar --null -T - --mode 'u=rwX,go=rX' -c | tar -C "$source" -x

# The same files always result in the same archive.
tar -C "$folder" --exclude "${source##*/}/debian" --sort name --mtime "@$epoch" --owner 0 --group 0 \
  --numeric-owner --mode 'u=rwX,go=rX' -c "${source##*/}" | xz -6 >"$archive"

cd "$source"
sed -i "1s/(.*)/($version)/" debian/changelog
# The options are separate words.
# shellcheck disable=SC2086
quietly "$folder/log" env -u CXX -u CC dpkg-buildpackage ${KESTREL_PACKAGE_OPTIONS---no-sign} \
  --jobs="$(nproc)"
rm -r "$source"

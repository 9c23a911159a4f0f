#!/bin/sh
# Builds and tests the plug-in. With the argument "package", also builds the Debian package, beside
# this folder.
set -eu

cd "$(dirname "$0")"
cmake -S . -B build
cmake --build build
ctest --test-dir build --output-on-failure
if [ "${1:-}" = package ]; then
  dpkg-buildpackage --build=binary --no-sign
fi

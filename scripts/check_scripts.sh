#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Checks ./run, ./test, ./bench, .ci/run, the scripts in debian and all files named *.sh or *.bash
# with shellcheck, and the syntax of the Perl programs of the plug-ins.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
find . -path ./build -prune -o -type f \
  \( -path ./run -o -path ./test -o -path ./bench -o -path ./.ci/run -o \
  -path './debian/tests/*' ! -name control -o -path ./debian/vexil-tools.install -o \
  -name '*.sh' -o -name '*.bash' \) -print0 |
  sort -z | xargs -0 shellcheck --external-sources
shopt -s nullglob
for program in plugins/shell-common/value-document plugins/*/*.pl; do
  perl -c "$program" 2>&1 | sed '/ syntax OK$/d'
done

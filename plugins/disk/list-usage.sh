#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-usage.sh DIRECTORY [--depth=N] [--all]: lists how much space the folders in a folder use.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

directory=$1
shift
depth=1
files=
for option in "$@"; do
  case $option in
    --depth=*) depth=$(integer "${option#--depth=}") ;;
    --all) files=--all ;;
  esac
done

need du coreutils
[ -d "$directory" ] || fail "$directory is no directory"
# du skips folders that it may not read, and reports each of them on standard error.
du --null --block-size=1K --one-file-system --max-depth="$depth" ${files:+"$files"} \
  -- "$directory" >"$work/usage" 2>"$work/complaint" || [ -s "$work/usage" ] ||
  fail "$(complaint du)"
# Converts "SIZE<tab>PATH<nul>" to two fields that end in NUL, sorted by size, the largest first.
sort -z -r -n "$work/usage" | sed -z 's/\t/\x00/' >"$work/data"
document -z list DiskUsage Size:int Path:string

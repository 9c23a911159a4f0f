#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-checksums.sh [--algorithm=NAME] [--file PATH]...: lists the checksums of files.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

algorithm=sha256
case $1 in
  --algorithm=*)
    algorithm=${1#--algorithm=}
    shift
    ;;
esac
need "${algorithm}sum" coreutils

: >"$work/data"
while [ $# -gt 1 ]; do
  path=$2
  shift 2
  [ -f "$path" ] || fail "$path is no file"
  [ -r "$path" ] || fail "You may not read $path"
  "${algorithm}sum" <"$path" >"$work/sum" 2>"$work/complaint" ||
    fail "$(complaint "${algorithm}sum")"
  read -r sum _ <"$work/sum"
  printf '%s\0%s\0' "$sum" "$path" >>"$work/data"
done
document -z list FileChecksum Checksum:string Path:string

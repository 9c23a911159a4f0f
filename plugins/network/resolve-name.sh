#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# resolve-name.sh: lists the addresses of the name that its standard input contains.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

name=$(cat)
need getent libc-bin
unknown="There is no address for the name '$name'"
[ -n "$name" ] || fail "$unknown"
getent ahosts -- "$name" >"$work/answer" || fail "$unknown"
awk -v OFS='\t' '!($1 in seen) {
  seen[$1] = 1
  print $1, (index($1, ":") ? 6 : 4)
}' "$work/answer" >"$work/data"
document list ResolvedAddress Address:string Family:int

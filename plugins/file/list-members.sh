#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-members.sh ARCHIVE [--member NAME]...
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

archive=$1
shift
need tar tar
[ -f "$archive" ] || fail "$archive is no file"
[ -r "$archive" ] || fail "You may not read $archive"
# The names become the arguments behind "--".
count=$#
while [ "$count" -gt 0 ]; do
  [ "$1" = --member ] || set -- "$@" "$1"
  shift
  count=$((count - 1))
done
# Escapes keep a name on one line, numbers keep an owner one word.
gather tar --list --verbose --full-time --numeric-owner --quoting-style=escape --force-local \
  --file="$archive" -- "$@"
# MODE OWNER SIZE DATE TIME NAME [-> TARGET]; a device has two numbers for a size.
sed -E -e 's/^([^ ]+) +([^ ]+) +([0-9,]+) +([^ ]+) ([^ ]+) /\1\t\2\t\3\t\4 \5\t/' \
  -e 's/\t[0-9]+,[0-9]+\t/\t0\t/' "$work/data" >"$work/members"
mv "$work/members" "$work/data"
document list ArchiveMember Mode:string Owner:string Size:int Modified:string Name:string

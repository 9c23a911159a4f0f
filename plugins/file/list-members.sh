#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-members.sh ARCHIVE [--member NAME]...: lists the members of an archive, or some of them.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

archive=$1
shift
need tar tar
[ -f "$archive" ] || fail "$archive is no file"
[ -r "$archive" ] || fail "You may not read $archive"
# Keeps only the names as arguments.
count=$#
while [ "$count" -gt 0 ]; do
  [ "$1" = --member ] || set -- "$@" "$1"
  shift
  count=$((count - 1))
done
# Escapes ensure that a name fits on one line, and numbers that an owner is one word.
gather tar --list --verbose --full-time --numeric-owner --quoting-style=escape --force-local \
  --file="$archive" -- "$@"
# Each line is MODE OWNER SIZE DATE TIME NAME [-> TARGET]. A device has two numbers instead of a size.
sed -E -e 's/^([^ ]+) +([^ ]+) +([0-9,]+) +([^ ]+) ([^ ]+) /\1\t\2\t\3\t\4 \5\t/' \
  -e 's/\t[0-9]+,[0-9]+\t/\t0\t/' "$work/data" >"$work/members"
mv "$work/members" "$work/data"
document list ArchiveMember Mode:string Owner:string Size:int Modified:string Name:string

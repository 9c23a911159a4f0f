#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-crontabs.sh [--users=NAME,...]: lists the entries of crontabs.
#
# For tests, CRONTAB_DIR replaces the folder that contains one file per user.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

folder=${CRONTAB_DIR:-/var/spool/cron/crontabs}
users=
case ${1-} in --users=*) users=,${1#--users=}, ;; esac

[ -d "$folder" ] || fail "There is no folder $folder: is the package cron installed?"
{ [ -r "$folder" ] && [ -x "$folder" ]; } || fail "You may not read the folder $folder"
: >"$work/data"
for table in "$folder"/*; do
  [ -f "$table" ] || continue
  user=${table##*/}
  case $users in '' | *,"$user",*) ;; *) continue ;; esac
  [ -r "$table" ] || fail "You may not read $table"
  # Skips settings and comments. A schedule is one word that starts with @, or five columns.
  user=$user awk '
    /^[ \t]*(#|$)/ || /^[ \t]*[A-Za-z_][A-Za-z0-9_]*[ \t]*=/ { next }
    {
      columns = $1 ~ /^@/ ? 1 : 5
      schedule = $1
      for (i = 2; i <= columns; ++i) schedule = schedule " " $i
      command = $0
      sub(/^[ \t]+/, "", command)
      for (i = 1; i <= columns; ++i) sub(/^[^ \t]+[ \t]*/, "", command)
      printf "%s%c%s%c%s%c", ENVIRON["user"], 0, schedule, 0, command, 0
    }' <"$table" >>"$work/data"
done
document -z list CrontabEntry User:string Schedule:string Command:string

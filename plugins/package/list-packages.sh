#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-packages.sh [--state=STATE] [--manual=BOOL,...] [--name PATTERN]...
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

state=installed
manual=
: >"$work/patterns"
while [ $# -gt 0 ]; do
  case $1 in
    --state=*) state=${1#--state=} ;;
    --manual=*) manual=,${1#--manual=}, ;;
    --name)
      shift
      printf '%s\n' "$1" >>"$work/patterns"
      ;;
  esac
  shift
done

need dpkg-query dpkg
need apt-mark apt
# shellcheck disable=SC2016 # the braces are for dpkg-query
format='${Package}\t${Version}\t${Architecture}\t${Installed-Size}\t${db:Status-Status}\t${binary:Summary}\n'
dpkg-query --show --showformat="$format" >"$work/all" 2>"$work/complaint" ||
  fail "$(complaint dpkg-query)"
apt-mark showmanual >"$work/manual" 2>"$work/complaint" || fail "$(complaint apt-mark)"

# One pass: state, patterns and marks are looked at together, the mark becomes a field.
awk -F '\t' -v OFS='\t' -v state="$state" -v manual="$manual" \
  -v marks="$work/manual" -v patterns="$work/patterns" '
  BEGIN {
    while ((getline mark <marks) > 0) {
      sub(/:.*/, "", mark)
      isManual[mark] = 1
    }
    while ((getline pattern <patterns) > 0) {
      gsub(/[.+]/, "[&]", pattern)
      gsub(/[*]/, ".*", pattern)
      wanted[++count] = "^" pattern "$"
    }
    wantsManual = manual == "" || manual ~ /,(1|y|yes|t|T|true|True),/
    wantsOthers = manual == "" || manual ~ /,(0|n|no|f|F|false|False),/
  }
  function isWanted(name, i) {
    for (i = 1; i <= count; ++i) if (name ~ wanted[i]) return 1
    return count == 0
  }
  state != "any" && $5 != state { next }
  !isWanted($1) { next }
  !($1 in isManual ? wantsManual : wantsOthers) { next }
  {
    summary = $0
    for (i = 1; i <= 5; ++i) sub(/^[^\t]*\t/, "", summary)
    print $1, $2, $3, $4, $5, ($1 in isManual ? "true" : "false"), summary
  }' "$work/all" >"$work/data"
document list Package Name:string Version:string Architecture:string Size:int State:string \
  Manual:bool Summary:string

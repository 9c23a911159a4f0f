#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_manual.sh STAGE VERSION: checks the installed manual pages against the tool.
set -euo pipefail

stage=$1 version=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

# page FILE: prints the page as plain text of 80 columns; fails on any warning of groff.
page() {
  groff -man -Tascii -ww -P-cbou -rLL=80n "$1" 2>"$work/complaints"
  [[ ! -s $work/complaints ]] || fail "$1: $(<"$work/complaints")"
}

for file in man1/vexil.1 man1/vexil-complete.1 man3/vexil-plugin.3 man5/vexil-plugin.5; do
  page "$stage/share/man/$file" >"$work/${file##*/}"
  grep -qF "Kestrel $version" "$work/${file##*/}" || fail "$file does not name version $version"
  ! grep -n '@' "$work/${file##*/}" || fail "$file contains a placeholder"
  [[ $(wc -L <"$work/${file##*/}") -le 80 ]] || fail "$file is wider than 80 columns"
done

# The page names every dispatcher option in the usage of the tool.
mapfile -t options < <("$stage/bin/vexil" --help | grep -o -- '--[a-z-]*' | sort -u)
[[ ${#options[@]} -ge 6 ]] || fail "the tool shows too few options: ${options[*]}"
for option in "${options[@]}"; do
  grep -qw -- "$option" "$work/vexil.1" || fail "vexil.1 does not name $option"
done

# The example of a descriptor works when it is copied from the page.
sed -n '/^ *<vexil-plugin>$/,/^ *<\/vexil-plugin>$/p' "$work/vexil-plugin.5" >"$work/greeting.xml"
answer=$("$stage/bin/vexil" --plugin "$work/greeting.xml" greeting show --name Ada)
[[ $answer == Ada ]] || fail "the example prints '$answer'"

# The page declares the entry point as the header does.
header=$(tr -s ' \n' ' ' <"$stage/include/kestrel/autocli/PluginEntryPoint.h")
declared=$(tr -s ' \n' ' ' <"$work/vexil-plugin.3" | grep -o 'void AutoCli_RegisterNamespaces(.*root);')
[[ $header == *"$declared"* ]] || fail "vexil-plugin.3 declares: $declared"

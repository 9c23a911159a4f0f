# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=sh
# What the scripts of the descriptors share. Sourced with "here" set to the folder of the scripts.
#
# A script prints a value document, or one line that begins with ERROR:, and nothing else. What it
# is made of is gathered in a temporary folder first; whatever fails on the way is told.
set -eu
: "${here:?}"

LC_ALL=C.UTF-8
export LC_ALL
unset TAR_OPTIONS

# fail TEXT: ends with an error of one line. It needs no tool, for that may be what is missing.
fail() {
  # Whoever writes to us is told of the error, not of a broken pipe.
  [ -t 0 ] || while read -r _; do :; done
  set -f
  IFS='
'
  # shellcheck disable=SC2086 # lines become words
  set -- $1
  IFS=' '
  printf 'ERROR:%s\n' "$*"
  isTold=yes
  exit 0
}

# need TOOL PACKAGE: ends with an error when there is no such tool.
need() {
  command -v "$1" >/dev/null 2>&1 ||
    fail "This command needs the tool $1 (package $2), which is not installed"
}

# finish STATUS: the last thing that a script does.
finish() {
  trap - EXIT
  if [ -n "$work" ]; then rm -rf "$work"; fi
  if [ "$1" -ne 0 ] && [ -z "$isTold" ]; then
    fail "${0##*/} failed; standard error may tell why"
  fi
}

# complaint TOOL: the first line of what the last tool complained, or a word of ours.
complaint() {
  if [ -s "$work/complaint" ]; then
    head -n 1 "$work/complaint"
  else
    printf '%s failed' "$1"
  fi
}

# gather COMMAND...: keeps what a command prints in $work/data; ends with its complaint when it
# fails.
gather() {
  "$@" >"$work/data" 2>"$work/complaint" || fail "$(complaint "$1")"
}

# integer TEXT: an integer as users may type it, without blanks, plus sign and zeros in front.
integer() {
  printf '%s' "$1" | sed -E 's/^[[:space:]]*[+]?0*([0-9])/\1/'
}

# document FORM...: prints $work/data as a value document, all of it or an error.
document() {
  perl "$here/value-document" "$@" <"$work/data" >"$work/document" 2>"$work/complaint" ||
    fail "$(complaint value-document)"
  isTold=yes
  cat "$work/document"
}

work=
isTold=
trap 'finish $?' EXIT
trap 'isTold=yes; exit 1' HUP INT PIPE TERM
for tool in awk:mawk cat:coreutils head:coreutils mktemp:coreutils mv:coreutils perl:perl-base \
  rm:coreutils sed:sed sort:coreutils; do
  need "${tool%:*}" "${tool#*:}"
done
work=$(mktemp -d 2>/dev/null) || fail "No temporary folder can be made in ${TMPDIR:-/tmp}"

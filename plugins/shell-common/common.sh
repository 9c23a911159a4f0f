# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=sh
# Shared by the scripts of the descriptors. A script sets "here" to its folder before it sources this
# file.
#
# A script prints either a value document or a line that starts with ERROR:. It first collects its
# data in the temporary folder $work, so that an error can still replace the document.
set -eu
: "${here:?}"

LC_ALL=C.UTF-8
export LC_ALL
# These variables change what the shell and the programs below do, or make them run code of the
# caller.
unset BASH_ENV CDPATH ENV GREP_COLORS GREP_OPTIONS GZIP POSIXLY_CORRECT TAR_OPTIONS
unset AWKLIBPATH AWKPATH PERL5DB PERL5LIB PERL5OPT PERLIO PERLLIB PERL_UNICODE

# fail MESSAGE: reports an error on one line and exits. Starts no other program, because the error
# may be that programs are missing.
fail() {
  # Reads the rest of the input, so that the program that writes it does not fail.
  [ -t 0 ] || while read -r _; do :; done
  set -f
  IFS='
'
  # shellcheck disable=SC2086 # lines become words
  set -- $1
  IFS=' '
  printf 'ERROR:%s\n' "$*"
  isReported=yes
  exit 0
}

# need TOOL PACKAGE: fails unless the program is installed.
need() {
  command -v "$1" >/dev/null 2>&1 ||
    fail "This command needs the tool $1 (package $2), which is not installed"
}

# finish STATUS: runs when a script exits. Removes $work and, if the script failed without a
# message, reports that.
finish() {
  trap - EXIT
  if [ -n "$work" ]; then rm -rf "$work"; fi
  if [ "$1" -ne 0 ] && [ -z "$isReported" ]; then
    fail "${0##*/} failed; standard error may tell why"
  fi
}

# complaint TOOL: prints the first line that the program wrote to standard error, or a fixed message
# if it wrote none.
complaint() {
  if [ -s "$work/complaint" ]; then
    head -n 1 "$work/complaint"
  else
    printf '%s failed' "$1"
  fi
}

# gather COMMAND...: writes the output of a command to $work/data. If the command fails, reports its
# error message.
gather() {
  "$@" >"$work/data" 2>"$work/complaint" || fail "$(complaint "$1")"
}

# integer TEXT: prints an integer without leading spaces or plus sign and, unless it is negative,
# without leading zeros.
integer() {
  printf '%s' "$1" | sed -E 's/^[[:space:]]*[+]?0*([0-9])/\1/'
}

# document FORM...: prints $work/data as a value document, or an error message if that fails.
document() {
  perl "$here/value-document" "$@" <"$work/data" >"$work/document" 2>"$work/complaint" ||
    fail "$(complaint value-document)"
  isReported=yes
  cat "$work/document"
}

work=
isReported=
trap 'finish $?' EXIT
trap 'isReported=yes; exit 1' HUP INT PIPE TERM
for tool in awk:mawk cat:coreutils head:coreutils mktemp:coreutils mv:coreutils perl:perl-base \
  rm:coreutils sed:sed sort:coreutils; do
  need "${tool%:*}" "${tool#*:}"
done
work=$(mktemp -d 2>/dev/null) || fail "No temporary folder can be made in ${TMPDIR:-/tmp}"

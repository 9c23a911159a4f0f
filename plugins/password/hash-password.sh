#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# hash-password.sh [--salt=TEXT]: prints the hash of the password that its standard input contains.
#
# The password is never in a file or an argument. The shell passes it to programs only through
# pipes.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

salt=
case ${1-} in --salt=*) salt=${1#--salt=} ;; esac
IFS= read -r password || :
if read -r more || [ -n "$more" ]; then fail "A password has one line"; fi
[ -n "$password" ] || fail "The password is empty"
need wc coreutils
[ "$(printf '%s' "$password" | wc -c)" -le 256 ] || fail "The password is longer than 256 bytes"

need openssl openssl
printf '%s\n' "$password" |
  openssl passwd -6 -stdin ${salt:+-salt "$salt"} >"$work/data" 2>"$work/complaint" ||
  fail "$(complaint openssl)"
document string

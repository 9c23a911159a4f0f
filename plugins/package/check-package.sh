#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check-package.sh NAME
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

need dpkg-query dpkg
status=0
# shellcheck disable=SC2016 # the braces are for dpkg-query
dpkg-query --show --showformat='${db:Status-Status}\n' -- "$1" \
  >"$work/states" 2>"$work/complaint" || status=$?
# Status 1 means that the name is not known, which is an answer too.
[ "$status" -le 1 ] || fail "$(complaint dpkg-query)"
awk '$0 == "installed" { found = 1 } END { print found ? "true" : "false" }' \
  "$work/states" >"$work/data"
document bool

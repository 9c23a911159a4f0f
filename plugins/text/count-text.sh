#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# count-text.sh: counts the lines, words and bytes of its standard input.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

need wc coreutils
gather wc -l -w -c
awk -v OFS='\t' '{ print $1, $2, $3 }' "$work/data" >"$work/counts"
mv "$work/counts" "$work/data"
document structure TextCount Lines:int Words:int Bytes:int

#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# show-package.sh NAME
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

need dpkg-query dpkg
# shellcheck disable=SC2016 # the braces are for dpkg-query
format='${Package}\t${Version}\t${Architecture}\t${db:Status-Status}\t${Section}\t${Installed-Size}\t${Depends}\t${Maintainer}\t${binary:Summary}\n'
gather dpkg-query --show --showformat="$format" -- "$1"
# "Name <address>" becomes two fields.
awk -F '\t' -v OFS='\t' '{
  summary = $0
  for (i = 1; i <= 8; ++i) sub(/^[^\t]*\t/, "", summary)
  address = $8
  sub(/^[^<]*<?/, "", address)
  sub(/>.*$/, "", address)
  maintainer = $8
  sub(/ *<.*$/, "", maintainer)
  print $1, $2, $3, $4, $5, $6, $7, maintainer, address, summary
}' "$work/data" >"$work/fields"
mv "$work/fields" "$work/data"
document structure PackageDetails Name:string Version:string Architecture:string State:string \
  Section:string Size:int Depends:strings Maintainer/Name:string Maintainer/Address:string \
  Summary:string

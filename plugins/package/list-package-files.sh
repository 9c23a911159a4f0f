#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-package-files.sh NAME
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

need dpkg-query dpkg
gather dpkg-query --listfiles -- "$1"
# Other lines tell of files that another package has put elsewhere.
sed -n '/^\//p' "$work/data" >"$work/files"
mv "$work/files" "$work/data"
document list PackageFile Path:string

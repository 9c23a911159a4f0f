#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-log.sh [--unit=NAME] [--file=PATH] [--since=TIME] [--level=N] [--lines=N]
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

gather perl "$here/list-log.pl" "$@"
document -z list LogLine Time:string Level:int Source:string Text:string

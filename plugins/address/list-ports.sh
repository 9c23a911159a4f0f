#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-ports.sh NUMBER...: lists the services that ports are assigned to.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

need getent libc-bin
for number in "$@"; do
  for protocol in tcp udp; do
    # Status 2 means that the port has no name.
    getent services "$(integer "$number")/$protocol" || [ $? -eq 2 ]
  done
done >"$work/answer"
awk -v OFS='\t' '{ split($2, port, "/"); print port[1], port[2], $1 }' "$work/answer" >"$work/data"
document list PortName Port:int Protocol:string Service:string

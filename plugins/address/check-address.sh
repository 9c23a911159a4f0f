#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check-address.sh ADDRESS [--count=N] [--family=4|6]: prints whether a machine responds to ping.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

address=$1
shift
count=3
family=
for option in "$@"; do
  case $option in
    --count=*) count=$(integer "${option#--count=}") ;;
    --family=*) family=-$(integer "${option#--family=}") ;;
  esac
done

need ping iputils-ping
status=0
ping ${family:+"$family"} -n -q -c "$count" -W 2 -- "$address" \
  >"$work/answer" 2>"$work/complaint" || status=$?
# Status 1 means that the machine did not respond, which is a valid result.
[ "$status" -le 1 ] || fail "$(complaint ping)"
# The address goes through the environment, because -v interprets backslashes.
address=$address awk -v OFS='\t' '
  BEGIN { address = ENVIRON["address"] }
  / packets transmitted, / { sent = $1; received = $4 }
  /^(rtt|round-trip) / { split($4, times, "/"); average = times[2] }
  END { print address, sent + 0, received + 0, average, (received > 0 ? "true" : "false") }
' "$work/answer" >"$work/data"
document structure AddressCheck Address:string Sent:int Received:int Average:string Reachable:bool

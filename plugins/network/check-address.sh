#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check-address.sh [--count=N] [--family=4|6]: prints how quickly a machine responds to ping. The
# standard input contains the machine's name or address.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

address=$(cat)
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
# Status 1 means that there was no response.
requests="$count requests"
[ "$count" -ne 1 ] || requests='1 request'
[ "$status" -ne 1 ] || fail "$address does not respond to $requests"
[ "$status" -eq 0 ] || fail "$(complaint ping)"
ADDRESS=$address awk -v OFS='\t' '
  / packets transmitted, / { sent = $1; received = $4 }
  /^(rtt|round-trip) / { split($4, times, "/") }
  function microseconds(text) { return int(text * 1000 + 0.5) }
  END {
    if (!received || !(3 in times)) exit 1
    print ENVIRON["ADDRESS"], sent, received, microseconds(times[1]), microseconds(times[2]),
      microseconds(times[3])
  }
' "$work/answer" >"$work/data" || fail "ping printed no times for $address"
document structure AddressCheck Address:string Sent:int Received:int 'Minimum Microseconds:int' \
  'Average Microseconds:int' 'Maximum Microseconds:int'

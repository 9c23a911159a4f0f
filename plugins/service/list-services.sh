#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# list-services.sh [--state=STATE] [--name=TEXT] | --only=NAME
#
# Asks the service manager if it runs, otherwise the scripts in /etc/init.d. SYSTEMD_DIR names
# another folder whose existence means that the manager runs, INIT_DIR another folder of scripts.
here=${0%/*}
# shellcheck source=plugins/shell-common/common.sh
. "$here/common.sh"

state=
name=
only=
for option in "$@"; do
  case $option in
    --state=*) state=${option#--state=} ;;
    --name=*) name=${option#--name=} ;;
    --only=*) only=${option#--only=} ;;
  esac
done

# keep NAME STATE SOURCE DESCRIPTION: keeps a service that is asked for.
keep() {
  if [ -n "$only" ] && [ "$1" != "$only" ]; then return; fi
  if [ -n "$state" ] && [ "$2" != "$state" ]; then return; fi
  case $1 in *"$name"*) printf '%s\0' "$@" >>"$work/services" ;; esac
}

# Lines of the manager: UNIT LOAD ACTIVE SUB DESCRIPTION.
ask_manager() {
  need systemctl systemd
  gather systemctl list-units --type=service --all --plain --no-legend --no-pager --full
  while read -r unit load active sub description; do
    case $load/$active/$sub in
      not-found/*) answer=unknown ;;
      */failed/*) answer=failed ;;
      */active/running) answer=running ;;
      *) answer=stopped ;;
    esac
    keep "${unit%.service}" "$answer" systemd "$description"
  done <"$work/data"
}

# ask_script SCRIPT: sets "answer". A script without such a word would take it for another.
ask_script() {
  answer=unknown
  grep -q 'status' "$1" || return 0
  status=0
  timeout 5 "$1" status </dev/null >/dev/null 2>&1 || status=$?
  case $status in
    0) answer=running ;;
    3) answer=stopped ;;
  esac
}

ask_scripts() {
  need grep grep
  need timeout coreutils
  for script in "$1"/*; do
    if ! [ -f "$script" ] || ! [ -x "$script" ] || ! [ -r "$script" ]; then continue; fi
    if [ -n "$only" ] && [ "${script##*/}" != "$only" ]; then continue; fi
    ask_script "$script"
    # One line of a script's head describes it.
    summary=$(sed -n '/^# *Short-Description:[ \t]*/{s///p;q}' "$script")
    keep "${script##*/}" "$answer" init.d "$summary"
  done
}

: >"$work/services"
if [ -d "${SYSTEMD_DIR:-/run/systemd/system}" ]; then
  ask_manager
else
  ask_scripts "${INIT_DIR:-/etc/init.d}"
fi
mv "$work/services" "$work/data"
if [ -n "$only" ]; then
  [ -s "$work/data" ] || fail "There is no service named $only"
  document -z structure Service Name:string State:string Source:string Description:string
else
  document -z list Service Name:string State:string Source:string Description:string
fi

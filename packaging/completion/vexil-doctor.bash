# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=bash
# Completion of vexil-doctor's command lines in bash.

_vexil_doctor() {
  local current=$2 previous=$3 words=
  COMPREPLY=()
  if [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " == *' -- '* ]]; then
    compopt -o default
    return
  elif [[ $previous == --formatter ]]; then
    words='csv json json-utf8 ndjson pretty python simple table tsv value-xml xml yaml'
  elif [[ $current == -* ]]; then
    words='--formatter --help --version'
  else
    compopt -o default
    return
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _vexil_doctor vexil-doctor

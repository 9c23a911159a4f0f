# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=bash
# Completion of vexil-newplugin's command lines in bash.

_vexil_newplugin() {
  local current=$2 previous=$3
  COMPREPLY=()
  if [[ $previous == --in ]]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$current")
  elif [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--descriptor --help --in --native --version' -- "$current")
  fi
}

complete -F _vexil_newplugin vexil-newplugin

# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=bash
# Completion of vexil-lint's command lines in bash.

_vexil_lint() {
  local current=$2 previous=$3 words=
  COMPREPLY=()
  if [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " == *' -- '* ]]; then
    compopt -o default
    return
  fi
  case $previous in
    --format) words='text json sarif' ;;
    --explain | --suppress) words=$(vexil-lint --rules 2>/dev/null | cut -d ' ' -f 1) ;;
    *)
      if [[ $current == -* ]]; then
        words='--explain --format --help --rules --suppress --version'
      else
        compopt -o default
        return
      fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _vexil_lint vexil-lint

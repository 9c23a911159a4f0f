# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=bash
# Completion of vexil-explain's command lines in bash: its own options, then what the tool completes.

# shellcheck source=/dev/null
. "${BASH_SOURCE[0]%/*}/vexil"

_vexil_explain() {
  local own
  if [[ $COMP_CWORD -gt 1 && ${COMP_WORDS[1]} == --shell-@(text|input) ]]; then
    own=${COMP_WORDS[1]}
    COMP_LINE=${COMP_LINE/"$own"/}
    COMP_POINT=$((COMP_POINT - ${#own}))
    COMP_CWORD=$((COMP_CWORD - 1))
    unset 'COMP_WORDS[1]'
    COMP_WORDS=("${COMP_WORDS[@]}")
  fi
  _vexil
  if [[ -z $own && $COMP_CWORD -eq 1 && $2 == -* ]]; then
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < \
      <(compgen -W '--shell-input --shell-text --version' -- "$2")
  fi
}

complete -F _vexil_explain vexil-explain

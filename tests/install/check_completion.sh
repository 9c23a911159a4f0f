#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_completion.sh STAGE: checks bash's completion of command lines of the installed tool.
set -euo pipefail

stage=$1
PATH=$stage/bin:$PATH
plugins=$stage/lib/norvane/vexil
# shellcheck source=packaging/completion/vexil.bash
source "$stage/share/bash-completion/completions/vexil"
failures=0

# expect "COMPLETIONS" WORD...: completes the last word of the line vexil WORD...
expect() {
  local completions=$1
  shift
  COMP_WORDS=(vexil "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _vexil
  if [[ ${COMPREPLY[*]} != "$completions" ]]; then
    echo "vexil $*: expected '$completions', but got '${COMPREPLY[*]}'" >&2
    failures=$((failures + 1))
  fi
}

expect "vexil" ""
expect "vexil" v
expect "" x
expect "command" vexil ""
expect "list" vexil command l
expect "" vexil command list ""
expect "" vexil nosuch ""
expect "--command-filter --description-filter --help --namespace-filter" vexil command list -
expect "--namespace-filter" vexil command list --command-filter x --n
expect "" vexil command list --command-filter ""
expect "--plugin-dir --plugin" --plug
expect "table tsv" --formatter t
expect "json-utf8 json" --formatter = j
expect "vexil" --formatter simple v
expect "vexil" --formatter = simple v
expect "storage" --plugin-dir "$plugins" stor
expect "list" --plugin-dir = "$plugins" storage mount ""

exit $((failures > 0))

# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=bash
# Completion of vexil's command lines in bash: dispatcher options, the words of the path, and the
# options of the command at the path. The paths and options come from the tool itself.

_vexil_dispatcher_options='--plugin-dir --plugin --formatter --format-param --screen-width --input
  --help'

# Prints the path of every command as a line of words. Arguments: the tool and its dispatcher
# options.
_vexil_commands() {
  "$@" --formatter table --format-param show-header=false \
    --format-param fields:VexilCommand=Namespace,Command vexil command list 2>/dev/null | tr '.' ' '
}

# Prints the words that can follow a path. Arguments: the path; standard input: all commands.
_vexil_next_words() {
  awk -v path="$*" 'BEGIN { count = split(path, words, " ") }
    {
      for (i = 1; i <= count; ++i) if ($i != words[i]) next
      if (NF > count) print $(count + 1)
    }' | sort -u
}

# Splits the line up to the cursor as the tool does. Sets `front` to the tool with its options that
# load plug-ins, `path` to the words of the path, `after` to whether an option follows them, and
# `pending` to the option that takes the next word as its value.
_vexil_split() {
  local i word
  front=("${COMP_WORDS[0]}") path=() after=false pending=
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    if [[ $word == -* && $word != *=* ]]; then
      pending=$word
      [[ ${#path[@]} -eq 0 ]] || after=true
    elif [[ $word == = ]]; then
      continue # bash cuts --name=value into three words
    elif [[ -n $pending ]]; then
      [[ $pending != --plugin && $pending != --plugin-dir ]] || front+=("$pending" "$word")
      pending=
    elif ! $after; then
      path+=("$word")
    fi
  done
}

_vexil() {
  local front path after pending current=${COMP_WORDS[COMP_CWORD]} choices=
  COMPREPLY=()
  _vexil_split
  [[ $current != = ]] || current=

  if [[ -n $pending && $current != -* ]]; then
    case $pending in
      --plugin | --plugin-dir | --input) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
      --formatter)
        choices='table simple ndjson json-utf8 csv tsv xml json python'
        mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
        ;;
    esac
    return
  fi

  if [[ $current != -* ]]; then
    $after || choices=$(_vexil_commands "${front[@]}" | _vexil_next_words "${path[@]}")
  elif [[ ${#path[@]} -eq 0 ]]; then
    choices=$_vexil_dispatcher_options
  else
    choices=$("${front[@]}" "${path[@]}" --help 2>/dev/null | grep -oE -- '--[a-z0-9-]+' | sort -u)
  fi
  mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
}

complete -F _vexil vexil

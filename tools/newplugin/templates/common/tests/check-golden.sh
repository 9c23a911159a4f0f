#!/bin/sh
# check-golden.sh VEXIL PLUGIN FORMAT FOLDER: compares what the command prints in a format with the
# file FOLDER/FORMAT. With the variable REWRITE set, it writes the file instead.
set -eu

vexil=$1 plugin=$2 format=$3 golden=$4/$3

# Prints a line with the parameters before the output of each call.
calls() {
  for parameters in "" "--sort=count --reverse" "--least=10 --capitals=yes" "--ready=no --ready=yes" \
    "--name=fig --name=plum --count=7" "--sort=colour"; do
    echo "=== $parameters"
    # Not quoted, because it contains several words.
    # shellcheck disable=SC2086
    "$vexil" --plugin "$plugin" --formatter "$format" @NAME@ list $parameters || echo "status $?"
  done
}

if [ -n "${REWRITE:-}" ]; then
  calls >"$golden" 2>&1
else
  calls 2>&1 | diff "$golden" -
fi

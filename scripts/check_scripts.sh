#!/usr/bin/env bash
# Whether shellcheck finds nothing in the scripts of this project, and perl no fault in its own.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
mapfile -t scripts < <(
  echo run
  echo test
  echo .ci/run
  find . -path ./build -prune -o \( -name '*.sh' -o -name '*.bash' \) -print | sort
)
shellcheck --external-sources "${scripts[@]}"
for program in plugins/shell/value-document plugins/shell/*.pl; do
  perl -c "$program" 2>&1 | sed '/ syntax OK$/d'
done

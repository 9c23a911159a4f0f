#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# fuzz.sh [SECONDS] [TARGET...]: uses libFuzzer to look for inputs that violate the assertions in
# fuzz/.
#
# The targets (all if none are named) run one after the other, for SECONDS each, 60 by default. The
# inputs that a run learns are kept in build/fuzz/learned for the next run; inputs that fail are
# written to build/fuzz/found. The exit status is 1 if there are any.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

seconds=60
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
  seconds=$1
  shift
fi
targets=("$@")
[[ $# -gt 0 ]] || mapfile -t targets < <(basename -a fuzz/corpus/*)

ensure_packages build fuzz
build_preset fuzz fuzzers
tree=build/fuzz
failed=()

# Longer inputs find hardly anything new and take more time. An input that takes more than 10
# seconds counts as a hang.
limits=(-max_len=4096 -timeout=10 -rss_limit_mb=2048)

# figure NAME LOG: prints the number from the last line of the log with "NAME: 5" or "NAME 5".
figure() { sed -nE "s/.*\b$1:? +([0-9]+).*/\1/p" "$2" | tail -n 1; }

fuzz_target() {
  local target=$1 log=$tree/$1.log dictionary=fuzz/dictionaries/$1.dict options=()
  mkdir -p "$tree/learned/$target" "$tree/found/$target"
  [[ ! -e $dictionary ]] || options+=("-dict=$dictionary")
  if ! nice -n 10 "$tree/fuzz/${target}Fuzz" "${limits[@]}" "${options[@]}" \
    "-max_total_time=$seconds" -print_final_stats=1 "-artifact_prefix=$tree/found/$target/" \
    "$tree/learned/$target" "fuzz/corpus/$target" "fuzz/regressions/$target" \
    >"$log" 2>&1 </dev/null; then
    failed+=("$target")
  fi
  printf '%-17s %9s executions %5s s %6s edges %6s features%s\n' "$target" \
    "$(figure 'stat::number_of_executed_units' "$log")" \
    "$seconds" "$(figure cov "$log")" "$(figure ft "$log")" \
    "$([[ " ${failed[*]} " != *" $target "* ]] || echo "  FAILED: $log")"
}

for target in "${targets[@]}"; do
  [[ -x $tree/fuzz/${target}Fuzz ]] || fail "No fuzz target: $target"
  fuzz_target "$target"
done
[[ ${#failed[@]} -eq 0 ]]

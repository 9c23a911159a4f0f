#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# fuzz.sh [SECONDS] [TARGET...]: uses libFuzzer to look for inputs that violate the assertions in
# fuzz/.
# fuzz.sh keep [TARGET...]: copies a small part of what was learned to the seeds.
#
# The targets (all if none are named) run one after the other, for SECONDS each, 60 by default. The
# inputs that a run learns are kept in build/fuzz/learned for the next run; inputs that fail are
# written to build/fuzz/found. The exit status is 1 if a target has failed.
#
# "keep" replaces the folder "learned" of each target's seeds. It then contains a few small inputs,
# at most 20 kB in all. Together they reach the edges that are known and that the other seeds do not
# reach, except for edges that only longer inputs reach.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

seconds=60
action=fuzz
if [[ ${1:-} == keep ]]; then
  action=keep
  shift
fi
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
max_kept=20000  # bytes per target

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

# merge TARGET LENGTH: makes the folder merged/TARGET, with the inputs of up to LENGTH bytes to keep.
merge() {
  local target=$1 merged=$tree/merged/$1
  rm -rf "$merged" && mkdir -p "$merged/seeds" "$tree/learned/$target"
  find "fuzz/corpus/$target" "fuzz/regressions/$target" -maxdepth 1 -type f \
    -exec cp -t "$merged/seeds" {} +
  # Adds files to the first folder, named after their contents. Without counters, it matters only
  # which edges an input reaches, not how often.
  quietly "$tree/$target.merge.log" nice -n 10 "$tree/fuzz/${target}Fuzz" -set_cover_merge=1 \
    -use_counters=0 -max_len="$2" -timeout=10 "$merged" "$tree/learned/$target" \
    "fuzz/corpus/$target"
  rm -r "$merged/seeds"
}

# size_of FOLDER: prints the number of bytes in its files.
size_of() { find "$1" -type f -printf '%s\n' | awk '{ size += $1 } END { print size + 0 }'; }

keep_target() {
  local target=$1 length=1024 kept=fuzz/corpus/$1/learned
  merge "$target" $length
  while [[ $(size_of "$tree/merged/$target") -gt $max_kept ]]; do
    length=$((length / 2))
    merge "$target" $length
  done
  rm -rf "$kept" && cp -r "$tree/merged/$target" "$kept"
  rmdir --ignore-fail-on-non-empty "$kept"
  printf '%-17s %4s inputs of at most %4s bytes, %6s bytes in all\n' "$target" \
    "$(find "$tree/merged/$target" -type f | wc -l)" $length "$(size_of "$tree/merged/$target")"
}

for target in "${targets[@]}"; do
  [[ -x $tree/fuzz/${target}Fuzz ]] || fail "No fuzz target: $target"
  "${action}_target" "$target"
done
[[ ${#failed[@]} -eq 0 ]]

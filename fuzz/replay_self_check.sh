#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# replay_self_check.sh PROGRAM: checks that the replay passes good inputs and fails on a bad input, a
# missing file and an empty folder.
set -u

replay=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/empty" "$folder/good/deeper" "$folder/bad/deeper"
touch "$folder/empty/.gitkeep" "$folder/good/deeper/nothing"
echo fine >"$folder/good/word"
echo fault >"$folder/bad/deeper/word"

complain() {
  echo "replay_self_check: $*" >&2
  exit 1
}

"$replay" "$folder/good" "$folder/empty" >"$folder/out" || complain "refuses good inputs"
grep -qx "2 inputs replayed" "$folder/out" || complain "does not count inputs"
"$replay" "$folder/good" "$folder/bad" 2>"$folder/errors" && complain "passes a bad input"
grep -qx "Does not hold: an input is fine" "$folder/errors" || complain "does not report the claim"
grep -qx "Failed on the input $folder/bad/deeper/word" "$folder/errors" ||
  complain "does not name the input"
"$replay" "$folder/empty" && complain "passes an empty folder"
"$replay" "$folder/good" "$folder/missing" 2>"$folder/errors" && complain "passes a missing file"
grep -qx "Unable to read $folder/missing" "$folder/errors" || complain "does not name the missing file"
exit 0

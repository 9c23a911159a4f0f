#!/bin/sh
# check-readme.sh VEXIL README BUILD: runs the lines "$ vexil ..." of the README in a folder whose
# "build" is BUILD, and compares what they print with the lines after them, up to the next command or
# the end of the block.
set -eu

vexil=$1 readme=$2 build=$3
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
mkdir "$folder/bin"
ln -s "$vexil" "$folder/bin/vexil"
ln -s "$build" "$folder/build"
PATH=$folder/bin:$PATH
cd "$folder"

# The blocks with commands, as the page shows them and as the commands print now.
# shellcheck disable=SC2016 # the backquotes are those of the page
sed -n '/^```console$/,/^```$/p' "$readme" | sed '/^```/d' >written
[ -s written ] || exit 1
grep '^\$ vexil ' written | cut -c 3- >commands
while IFS= read -r line; do
  echo "$ $line"
  sh -c "$line" 2>&1 </dev/null || echo "[exit status $?]"
done <commands >printed
diff written printed

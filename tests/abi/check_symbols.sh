#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_symbols.sh LIBRARY: checks that the library exports the symbols in exported_symbols.txt and
# no others. `check_symbols.sh --update LIBRARY` rewrites the list; review the difference as a change
# of the interface.
#
# The list does not contain inline functions (weak symbols), because every user of a header compiles
# its own copies and the optimiser decides which remain. It does not contain thunks either, because
# they follow from the base classes.
set -euo pipefail

update=false
[[ $1 != --update ]] || { update=true && shift; }
library=$1
list=$(dirname "${BASH_SOURCE[0]}")/exported_symbols.txt
ours='^((vtable|VTT|typeinfo|typeinfo name) for )?Kestrel::|^Panic\('

text='std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >'

symbols=$(nm --dynamic --demangle --defined-only "$library" |
  sed -n "s/^[0-9a-f]* [TBDRGSV] //; t found; d; :found; / thunk to /d; s/$text/std::string/g; p" |
  LC_ALL=C sort -u)

foreign=$(grep -vE "$ours" <<<"$symbols" || true)
if [[ -n $foreign ]]; then
  echo "The library exports foreign names:" >&2
  echo "$foreign" >&2
  exit 1
fi

# A program may contain a copy of a public constant, made by a copy relocation. The library must use
# that copy too, so it must not bind the constant to its own definition.
constants=$(nm --dynamic --defined-only "$library" | awk '$2 ~ /^[BDG]$/ { print $3 }')
bound=$(readelf --relocs --wide "$library" | awk 'NF >= 5 { sub(/@.*/, "", $5); print $5 }')
[[ -n $constants ]] || { echo "The library exports no constants." >&2 && exit 1; }
for constant in $constants; do
  if ! grep -qxF "$constant" <<<"$bound"; then
    echo "$(c++filt "$constant") is bound within the library: see cmake/replaceable.list" >&2
    exit 1
  fi
done

exported=$(grep -E "$ours" <<<"$symbols")
if $update; then
  echo "$exported" >"$list"
elif ! diff -u --label listed --label exported "$list" <(echo "$exported") >&2; then
  echo "If the change is wanted: tests/abi/check_symbols.sh --update $library" >&2
  exit 1
fi

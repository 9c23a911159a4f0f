#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# installed-guides.sh FOLDER: writes the guides to FOLDER, for readers who have the installed tool
# but not the sources. The examples start `vexil`. What is between <!-- sources --> and
# <!-- /sources --> concerns the sources only and is left out. A link to a file of the sources is
# replaced by the text of the link.
#
# Fails if a guide still mentions ./run, or links to a file that is not installed.
set -euo pipefail

folder=$1
mkdir -p "$folder"
for page in docs/*.md; do
  case ${page##*/} in README.md | architecture.md | installing.md | reliability.md) continue ;; esac
  sed -E -e '/^<!-- sources -->$/,/^<!-- \/sources -->$/d' -e 's|\./run\b|vexil|g' \
    -e 's/\[([^]]*)\]\((\.\.\/|architecture|decisions|installing|reliability|README)[^)]*\)/\1/g' \
    -e 's|plugins/hello|examples/hello|g' -e 's|^(```[a-z]+) .*|\1|' "$page" >"$folder/${page##*/}"
done

cat >"$folder/README.md" <<'END'
# Guides

Begin with [the tour](tour.md). Where an example shows a list of namespaces or commands, an installed
tool lists those of its plug-ins too. The folder reference has the description of every public
header, and the folder examples has a plug-in with its package and a program.
END

! grep -n '\./run\|build/dev' "$folder"/*.md || exit 1
for page in "$folder"/*.md; do
  while read -r link; do
    [[ -e $folder/$link ]] || { echo "$page links to $link, which is not installed" && exit 1; }
  done < <(grep -oE '\]\([^)#]+' "$page" | sed -n '/:\/\//!s/^](//p')
done

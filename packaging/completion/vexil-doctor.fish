# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Completion of vexil-doctor's command lines in fish.

complete -c vexil-doctor -l formatter -x -d 'The formatter of the list' \
  -a 'csv json json-utf8 ndjson pretty python simple table tsv value-xml xml yaml'
complete -c vexil-doctor -l help -d 'Show the usage'
complete -c vexil-doctor -l version -d 'Show the version'

# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Completion of vexil-lint's command lines in fish.

set -l rules '(vexil-lint --rules 2>/dev/null | string replace -r " .*" "")'
complete -c vexil-lint -l explain -x -a $rules -d 'Explain a rule'
complete -c vexil-lint -l format -x -a 'text json sarif' -d 'The format of the findings'
complete -c vexil-lint -l help -d 'Show the usage'
complete -c vexil-lint -l rules -d 'List the rules'
complete -c vexil-lint -l suppress -x -a $rules -d 'Drop the findings of a rule'
complete -c vexil-lint -l version -d 'Show the version'

# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Completion of vexil-explain's command lines in fish: its own options, then what the tool completes.

set -l isFirst 'test (count (commandline -opc)) -eq 1'
complete -c vexil-explain -w vexil
complete -c vexil-explain -n $isFirst -l shell-input -d 'Only print the standard input of the shell'
complete -c vexil-explain -n $isFirst -l shell-text -d 'Only print the text that the shell would get'
complete -c vexil-explain -n $isFirst -l version -d 'Show the version'

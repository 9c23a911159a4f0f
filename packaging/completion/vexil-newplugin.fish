# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Completion of vexil-newplugin's command lines in fish.

complete -c vexil-newplugin -f
complete -c vexil-newplugin -l descriptor -d 'Create a descriptor with a script'
complete -c vexil-newplugin -l help -d 'Show the usage'
complete -c vexil-newplugin -l in -x -a '(__fish_complete_directories)' -d 'Create it in a folder'
complete -c vexil-newplugin -l native -d 'Create a plug-in in C++'
complete -c vexil-newplugin -l version -d 'Show the version'

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# ssh_server.sh FOLDER: puts Debian's ssh server into FOLDER without installing it. The installation
# of the package would start a server for the whole machine; the tests need its program only.
#
# Does nothing if the machine has a server already, or FOLDER has one.
set -euo pipefail

# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[[ $# -eq 1 ]] || fail "Usage: ssh_server.sh FOLDER"
folder=$1
[[ ! -x /usr/sbin/sshd && ! -x $folder/usr/sbin/sshd ]] || exit 0
command -v apt-get >/dev/null || fail "There is no ssh server, and no apt to get one from."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
say "Extracting the ssh server into $folder ..."
(cd "$work" && apt-get -q download openssh-server) >"$work/log" 2>&1 || {
  cat "$work/log" >&2
  fail "apt could not download openssh-server."
}
dpkg-deb --extract "$work"/openssh-server_*.deb "$work/root"
if absent=$(ldd "$work/root/usr/sbin/sshd" | grep 'not found'); then
  fail "The ssh server needs libraries that are not installed:"$'\n'"$absent"
fi
mkdir -p "$(dirname "$folder")"
rm -rf "$folder"
mv "$work/root" "$folder"

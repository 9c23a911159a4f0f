# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# shellcheck shell=bash
# Functions of ./run, ./test, ./bench, .ci/run and the scripts in this folder, which source this
# file in the project's root folder.

say() { printf '%s\n' "$*" >&2; }

fail() {
  say "$*"
  exit 1
}

# Prints the packages of the given groups that are not installed, one per line.
missing_packages() {
  local group package tool
  grep -v '^#' scripts/packages.txt | while read -r group package tool _; do
    case " $* " in *" $group "*) ;; *) continue ;; esac
    if [[ $tool != - ]]; then
      command -v "$tool" >/dev/null || echo "$package"
    elif command -v dpkg-query >/dev/null; then
      dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
        echo "$package"
    fi
  done
}

package_purpose() {
  awk -v package="$1" '$2 == package { $1 = $2 = $3 = ""; print substr($0, 4); exit }' \
    scripts/packages.txt
}

# Prints the words to put before a command that needs the rights of root: nothing if the user is
# root, otherwise sudo with its options. Fails if sudo cannot be used.
root_prefix() {
  if [[ $EUID -eq 0 ]]; then
    return 0
  elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
    echo "sudo -n"
  elif command -v sudo >/dev/null && [[ -t 0 && -t 2 ]]; then
    echo "sudo"
  else
    return 1
  fi
}

# Prints what installing the packages with the given options of apt would change: the installed
# packages that would be upgraded, or apt's error message if it cannot install them without removing
# one. Prints nothing if only packages would be added. Usage: obstacles "OPTIONS" PACKAGE...
obstacles() {
  local options=$1 plan
  shift
  # The options are separate words.
  # shellcheck disable=SC2086
  if ! plan=$(LC_ALL=C apt-get -s --no-install-recommends --no-remove $options install "$@" 2>&1); then
    echo "$plan"
    return
  fi
  awk '$1 == "Inst" && $3 ~ /^\[/ { print "  upgrade: " $2 }' <<<"$plan"
}

# Installs packages for which obstacles() printed no error message.
# Usage: apt_install_with "OPTIONS" ROOT_PREFIX PACKAGE...
apt_install_with() {
  local options=$1 as_root=$2 log
  shift 2
  log=$(mktemp)
  # The prefix is empty or consists of several words.
  # shellcheck disable=SC2086
  if ! $as_root env DEBIAN_FRONTEND=noninteractive apt-get -y -q --no-install-recommends \
    --no-remove -o DPkg::Lock::Timeout=300 $options install "$@" >"$log" 2>&1 </dev/null; then
    tail -n 30 "$log" >&2
    fail "apt could not install: $*"
  fi
  rm -f "$log"
}

# Installs the given packages and their dependencies, if possible without changing any installed
# package. If an installed library is older than the latest version of its headers, the headers are
# installed from the release itself, without its updates. A package that cannot be installed in
# either way is installed together with the upgrades that it needs, after these are listed. Nothing
# is ever removed.
apt_install() {
  local as_root=$1 release options package changes log added=() others=()
  shift
  log=$(mktemp)
  # shellcheck disable=SC2086
  $as_root apt-get -qq update >"$log" 2>&1 </dev/null ||
    say "apt-get update failed; continuing with the present package lists."
  rm -f "$log"
  # shellcheck source=/dev/null
  release=$(. /etc/os-release && echo "${VERSION_CODENAME:-stable}")
  for package in "$@"; do
    if [[ -z $(obstacles "" "$package") ]]; then added+=("$package"); else others+=("$package"); fi
  done
  [[ ${#added[@]} -eq 0 ]] || apt_install_with "" "$as_root" "${added[@]}"
  for package in "${others[@]}"; do
    options=""
    if [[ -z $(obstacles "--target-release $release" "$package") ]]; then
      options="--target-release $release"
    else
      changes=$(obstacles "" "$package")
      say "$package requires changes of packages that are installed:"
      say "$changes"
      ! grep -qv '^  upgrade: ' <<<"$changes" ||
        fail "Install the missing packages by hand, then start again."
    fi
    apt_install_with "$options" "$as_root" "$package"
  done
}

# Installs the packages of the given groups that are missing, after listing them with their purpose.
ensure_packages() {
  local names missing package as_root
  names=$(missing_packages "$@")
  [[ -n $names ]] || return 0
  mapfile -t missing <<<"$names"

  say "Missing from this machine:"
  for package in "${missing[@]}"; do
    say "  $package: $(package_purpose "$package")"
  done
  if ! command -v apt-get >/dev/null || ! as_root=$(root_prefix); then
    fail "They cannot be installed from here. As root: apt-get install ${missing[*]}"
  fi
  say "Installing them with apt ..."
  apt_install "$as_root" "${missing[@]}"
}

# Runs a command and writes its output to a log file. Prints the end of the file only if the command
# fails.
quietly() {
  local log=$1
  shift
  if ! "$@" >"$log" 2>&1 </dev/null; then
    tail -n 60 "$log" >&2
    fail "Failed: $* (the whole output is in $log)"
  fi
}

# Configures the build tree of a preset and builds targets in it (all if none are named). Shows the
# progress on a terminal only.
build_preset() {
  local preset=$1 tree=build/$1
  shift
  # CMake refuses a build tree that was configured in a different folder, so it is emptied.
  if [[ -e $tree/CMakeCache.txt ]] &&
    ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$tree/CMakeCache.txt"; then
    find "$tree" -mindepth 1 -maxdepth 1 ! -name lock ! -name started -exec rm -rf {} +
  fi
  mkdir -p "$tree"
  quietly "$tree/configure.log" cmake --preset "$preset"
  if [[ -t 2 ]]; then
    NINJA_STATUS="[%f/%t] " cmake --build "$tree" ${1:+--target "$@"} >&2 </dev/null ||
      fail "The build in $tree failed."
    printf '\r\033[K' >&2
  else
    quietly "$tree/build.log" cmake --build "$tree" ${1:+--target "$@"}
  fi
}

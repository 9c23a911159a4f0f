#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# check_configure.sh SOURCE WORK: checks the effects of build options, such as the linked libraries.
# Compiles nothing, but reads the commands that the build would run.
set -euo pipefail

source=$1 work=$2

fail() {
  printf '%s\n' "$*" >&2
  exit 1
}

# configure NAME OPTION...: configures in the folder $work/NAME; the output is in its file "output".
configure() {
  local name=$1
  shift
  mkdir -p "$work/$name"
  cmake -G Ninja -S "$source" -B "$work/$name" -DKESTREL_BUILD_TESTS=OFF \
    -DKESTREL_BUILD_PLUGINS=OFF "$@" >"$work/$name/output" 2>&1 ||
    fail "cmake fails with $*:"$'\n'"$(<"$work/$name/output")"
}

link_command() {
  ninja -C "$work/$1" -t commands kestrel | grep -e ' -shared ' | grep -e "-o ${2:-libkestrel}"
}

expect() {
  grep -qE -e "$2" <<<"$1" || fail "expected '$2' in: $1"
}

expect_not() {
  ! grep -qE -e "$2" <<<"$1" || fail "expected no '$2' in: $1"
}

rm -rf "$work"

configure standin
command=$(link_command standin)
expect "$command" 'platform/libkestrel_zoluser\.a'
expect_not "$command" '-l(zoluser|tessalibs|auditTlsParams)'

configure host -DKESTREL_PLATFORM=host
command=$(link_command host)
expect "$command" '-lzoluser +-ltessalibs +-lauditTlsParams'
expect_not "$command" 'libkestrel_(zoluser|tessalibs|audit)\.a'

! cmake -G Ninja -S "$source" -B "$work/wrong" -DKESTREL_PLATFORM=other >"$work/wrong.output" 2>&1 ||
  fail "an unknown platform is accepted"
expect "$(<"$work/wrong.output")" "KESTREL_PLATFORM must be standin or host, not 'other'"

# fake_boost VERSION: creates a CMake package that reports this version of Boost.
fake_boost() {
  mkdir -p "$work/boost-$1"
  cat >"$work/boost-$1/BoostConfig.cmake" <<END
set(Boost_VERSION $1)
if(NOT TARGET Boost::headers)
  add_library(Boost::headers INTERFACE IMPORTED)
endif()
foreach(component IN LISTS Boost_FIND_COMPONENTS)
  add_library(Boost::\${component} INTERFACE IMPORTED)
  target_link_libraries(Boost::\${component} INTERFACE boost_\${component})
  set(Boost_\${component}_FOUND TRUE)
endforeach()
END
  cat >"$work/boost-$1/BoostConfigVersion.cmake" <<END
set(PACKAGE_VERSION $1)
set(PACKAGE_VERSION_COMPATIBLE TRUE)
if(PACKAGE_FIND_VERSION STREQUAL PACKAGE_VERSION)
  set(PACKAGE_VERSION_EXACT TRUE)
endif()
END
}

fake_boost 1.75.0
configure boost-before -DBoost_DIR="$work/boost-1.75.0"
expect "$(link_command boost-before kestrel1/expression.so)" '-lboost_regex'

fake_boost 1.76.0
configure boost-since -DBoost_DIR="$work/boost-1.76.0"
expect_not "$(link_command boost-since kestrel1/expression.so)" '-lboost'

note='-- The tool looks for plug-ins in /usr/lib/norvane/vexil \(KESTREL_PLUGIN_DIR\), but they are'
configure usr -DCMAKE_INSTALL_PREFIX=/usr
expect_not "$(<"$work/usr/output")" 'KESTREL_PLUGIN_DIR'
[[ $(PKG_CONFIG_PATH=$work/usr pkg-config --cflags kestrel) =~ ^\ *$ ]] ||
  fail "pkg-config names a folder that the compiler searches by itself"
ninja -C "$work/usr" -t query uninstall >"$work/uninstall" || fail "there is no target 'uninstall'"
configure opt -DCMAKE_INSTALL_PREFIX=/opt/kestrel
expect "$(<"$work/opt/output")" "$note installed to /opt/kestrel/lib/norvane/vexil"
configure own -DCMAKE_INSTALL_PREFIX=/opt/kestrel -DKESTREL_PLUGIN_DIR=/opt/kestrel/lib/norvane/vexil
expect_not "$(<"$work/own/output")" 'KESTREL_PLUGIN_DIR'

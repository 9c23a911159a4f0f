// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/MadeUpSystemd.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Testing {
namespace {

// The caller's PATH contains no other programs, so the script sets a PATH of its own.
constexpr char kProgram[] = R"sh(#!/bin/sh
PATH=/usr/bin:/bin
printf '%s\n' "$*" >>"$folder/calls"
word=journal
for each; do case $each in -*) ;; *) word=$each; break ;; esac; done
if [ ! -e "$folder/$word.out" ] && [ ! -e "$folder/$word.sh" ]; then
  echo "Unknown command verb $word." >&2
  exit 1
fi
[ ! -e "$folder/$word.out" ] || cat "$folder/$word.out"
[ ! -e "$folder/$word.err" ] || cat "$folder/$word.err" >&2
[ ! -e "$folder/$word.sh" ] || . "$folder/$word.sh"
[ ! -e "$folder/$word.status" ] || exit "$(cat "$folder/$word.status")"
exit 0
)sh";

}  // namespace

MadeUpSystemd::MadeUpSystemd() : path_("PATH", folder_.GetPath()) {
  // Allows other users to enter the folder, for tests that run as such a user.
  EXPECT_EQ(::chmod(folder_.GetPath().c_str(), 0777), 0);
  std::string program = kProgram;
  program.insert(program.find("printf"), "folder='" + folder_.GetPath() + "'\n");
  for (const char* const name : {"systemctl", "journalctl"}) {
    EXPECT_EQ(::chmod(folder_.Write(name, program).c_str(), 0755), 0);
  }
  EXPECT_EQ(::chmod(folder_.Write("calls", "").c_str(), 0666), 0);
}

void MadeUpSystemd::Answer(const std::string& word, const std::string& output, int status,
                           const std::string& errorOutput) const {
  folder_.Write(word + ".out", output);
  folder_.Write(word + ".err", errorOutput);
  folder_.Write(word + ".status", std::to_string(status));
}

void MadeUpSystemd::Do(const std::string& word, const std::string& script) const {
  folder_.Write(word + ".sh", script + "\n");
}

void MadeUpSystemd::AnswerAfter(const std::string& word, const std::string& output) const {
  Answer(word, "");
  folder_.Write("next", output);
  Do(word, "cp \"$folder/next\" \"$folder/show.out\"");
}

void MadeUpSystemd::Remove(const std::string& program) const {
  EXPECT_EQ(::unlink(folder_.GetPath(program).c_str()), 0);
}

std::vector<std::string> MadeUpSystemd::GetCalls() const {
  std::vector<std::string> calls;
  const std::string noted = folder_.Read("calls");
  for (const std::string_view line : Host::SplitLines(noted)) {
    calls.emplace_back(line);
  }
  return calls;
}

std::string ShownUnit(const std::string& unit, const std::string& active, const std::string& sub,
                      int mainProcess, const std::string& boot, const std::string& load) {
  return "MainPID=" + std::to_string(mainProcess) +
         "\nMemoryCurrent=" + (mainProcess == 0 ? "[not set]" : "1536") + "\nId=" + unit +
         "\nDescription=OpenBSD Secure Shell server\nLoadState=" + load +
         "\nActiveState=" + active + "\nSubState=" + sub + "\nFragmentPath=/lib/systemd/system/" +
         unit + "\nSourcePath=\nUnitFileState=" + boot +
         "\nInactiveExitTimestamp=Sun 2026-11-22 08:00:01 UTC"
         "\nActiveEnterTimestamp=Sun 2026-11-22 08:00:02 UTC"
         "\nActiveExitTimestamp=Sun 2026-11-22 08:00:03 UTC"
         "\nInactiveEnterTimestamp=Sun 2026-11-22 08:00:04 UTC\n";
}

std::string ShownUnknown(const std::string& unit) {
  return "MainPID=0\nMemoryCurrent=[not set]\nId=" + unit + "\nDescription=" + unit +
         "\nLoadState=not-found\nActiveState=inactive\nSubState=dead\nFragmentPath=\nSourcePath=\n"
         "UnitFileState=\nInactiveExitTimestamp=\nActiveEnterTimestamp=\nActiveExitTimestamp=\n"
         "InactiveEnterTimestamp=\n";
}

}  // namespace Kestrel::Testing

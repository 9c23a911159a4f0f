// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/support/MadeUpMachine.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrel/testing/CommandRun.h"
#include "kestrel/testing/GoogleTest.h"
#include "plugins/host/support/HostTool.h"
#include "plugins/host/support/Namespaces.h"
#include "support/Sanitizer.h"

namespace Kestrel::Testing {

MadeUpMachineTest::MadeUpMachineTest() {
  for (const char* const name : {"proc", "run", "sys"}) {
    Folder(name);
  }
}

bool MadeUpMachineTest::IsFile(const std::string& path) const {
  struct stat status = {};
  return ::stat(files_.GetPath(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string MadeUpMachineTest::Content(const std::string& path) const {
  return IsFile(path) ? files_.Read(path) : std::string();
}

void MadeUpMachineTest::Mode(const std::string& path, mode_t mode) {
  EXPECT_EQ(::chmod(files_.GetPath(path).c_str(), mode), 0) << path;
}

void MadeUpMachineTest::Link(const std::string& path, const std::string& target) {
  Folder(path.substr(0, path.rfind('/')));
  EXPECT_EQ(::symlink(target.c_str(), files_.GetPath(path).c_str()), 0) << path;
}

void MadeUpMachineTest::RunThere(const std::function<void()>& body) const {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs files of its own in /proc";
  }
  GetTool();  // loads the plug-in before the machine is replaced
  ::chmod(files_.GetPath().c_str(), 0755);
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [this, &body] {
    for (const char* const name : {"proc", "run", "sys", "etc", "var"}) {
      if (::access(files_.GetPath(name).c_str(), F_OK) != 0) {
        continue;
      }
      ASSERT_EQ(::mount(files_.GetPath(name).c_str(), (std::string("/") + name).c_str(), nullptr,
                        MS_BIND, nullptr),
                0)
          << name;
    }
    PrepareThere();
    body();
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

void MadeUpMachineTest::PrepareThere() const {}

void MadeUpMachineTest::ExpectPrinted(const std::string& commandLine,
                                      const std::string& printed) const {
  RunThere([&] {
    const CommandRun run = GetTool().Run(SplitShellWords(commandLine));
    EXPECT_TRUE(Passes(CheckShape(run))) << commandLine;
    EXPECT_EQ(Printed(run, "", {}, 80), printed) << commandLine;
  });
}

}  // namespace Kestrel::Testing

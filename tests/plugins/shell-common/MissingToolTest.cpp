// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "plugins/shell-common/Descriptors.h"
#include "plugins/support/CommandCall.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The error messages of scripts if a program is missing or fails, or if there is no folder for
// temporary files; and the removal of these files.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

struct MissingTool {
  const char* tool;
  const char* package;
  const char* command;
  Parameters parameters;
};

void PrintTo(const MissingTool& missing, std::ostream* out) {
  *out << missing.command << " without " << missing.tool;
}

class MissingToolTest : public ::testing::TestWithParam<MissingTool> {
 protected:
  /// Fills a folder with links to all programs of the scripts except one.
  MissingToolTest() {
    for (const char* const name : {"awk", "cat", "getent", "head", "mktemp", "mv", "openssl",
                                   "perl", "ping", "rm", "sed", "sort", "wc"}) {
      const std::string path = Witness("command -v " + std::string(name) + " || :");
      if (name != std::string(GetParam().tool) && !path.empty()) {
        const std::string target = path.substr(0, path.size() - 1);
        EXPECT_EQ(::symlink(target.c_str(), tools_.GetPath(name).c_str()), 0) << target;
      }
    }
  }

  const ScopedTempDir tools_;
};

TEST_P(MissingToolTest, IsNamed) {
  const ScopedEnvironment path("PATH", tools_.GetPath());
  EXPECT_THAT(CallErrors(GetParam().command, GetParam().parameters),
              ElementsAre("This command needs the tool " + std::string(GetParam().tool) +
                          " (package " + GetParam().package + "), which is not installed"));
}

INSTANTIATE_TEST_SUITE_P(
    Tools, MissingToolTest,
    ::testing::Values(
        // Programs that every script uses.
        MissingTool{"awk", "mawk", "system password hash", {{"password", "x"}}},
        MissingTool{"cat", "coreutils", "system password hash", {{"password", "x"}}},
        MissingTool{"head", "coreutils", "system password hash", {{"password", "x"}}},
        MissingTool{"mktemp", "coreutils", "system password hash", {{"password", "x"}}},
        MissingTool{"mv", "coreutils", "system password hash", {{"password", "x"}}},
        MissingTool{"perl", "perl-base", "system password hash", {{"password", "x"}}},
        MissingTool{"rm", "coreutils", "system password hash", {{"password", "x"}}},
        MissingTool{"sed", "sed", "system password hash", {{"password", "x"}}},
        MissingTool{"sort", "coreutils", "system password hash", {{"password", "x"}}},
        // Programs that a single script uses.
        MissingTool{"getent", "libc-bin", "network name resolve", {{"name", "localhost"}}},
        MissingTool{"ping", "iputils-ping", "network address check", {{"address", "localhost"}}},
        MissingTool{"wc", "coreutils", "system password hash", {{"password", "x"}}},
        MissingTool{"openssl", "openssl", "system password hash", {{"password", "x"}}}),
    [](const auto& each) {
      std::string name = std::string(each.param.command) + " without " + each.param.tool;
      for (char& letter : name) {
        letter = letter == ' ' || letter == '-' ? '_' : letter;
      }
      return name;
    });

TEST(ScriptFaultTest, ReportsThatThereIsNoTemporaryFolder) {
  const ScopedEnvironment folder("TMPDIR", "/nosuch");
  EXPECT_THAT(CallErrors("system password hash", {{"password", "x"}}),
              ElementsAre("No temporary folder can be made in /nosuch"));
}

TEST(ScriptFaultTest, RemovesItsTemporaryFiles) {
  const ScopedTempDir work;
  const ScopedEnvironment folder("TMPDIR", work.GetPath());
  Call("system password hash", {{"password", "x"}});
  CallErrors("network name resolve", {{"name", "no such name"}});
  // A reader that closes the pipe early.
  Witness("'" + ScriptPath("resolve-name.sh") + "' localhost </dev/null 2>&1 | head -c 1");
  EXPECT_EQ(Witness("ls -A '" + work.GetPath() + "'"), "");
}

TEST(ScriptFaultTest, ReportsAnUnexpectedFailure) {
  const ScopedTempDir tools;
  Witness("cd '" + tools.GetPath() + "' && printf '#!/bin/sh\\nexit 1\\n' >awk && chmod +x awk");
  const ScopedEnvironment path("PATH", tools.GetPath() + ":/usr/bin:/bin");
  EXPECT_THAT(CallErrors("network name resolve", {{"name", "localhost"}}),
              ElementsAre("resolve-name.sh failed; standard error may tell why"));
}

}  // namespace
}  // namespace Kestrel::Testing

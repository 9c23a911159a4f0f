// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugins/host/support/FileWatch.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/system/FullMachine.h"
#include "support/Random.h"

// Files with arbitrary content: each command returns a result or reports an error, and no result
// contains an escape character, a NUL or the byte FF.
namespace Kestrel::Testing {
namespace {

using ::testing::Not;

struct HostileCase {
  const char* name;
  const char* path;
  Parameters parameters;
};

const HostileCase kCommands[] = {
    {"ClockGet", "system clock get", {}},
    {"CpuCount", "system cpu count", {}},
    {"CpuList", "system cpu list", {}},
    {"CpuUsageList", "system cpu usage list", {{"interval", "10"}}},
    {"CrontabList", "system crontab list", {}},
    {"DeviceList", "system device list", {}},
    {"LoadGet", "system load get", {}},
    {"MemoryGet", "system memory get", {}},
    {"ModuleCheck", "system module check", {{"name", "loop"}}},
    {"ModuleList", "system module list", {}},
    {"ParameterGet", "system parameter get", {{"name", "vm.swappiness"}}},
    {"ParameterList", "system parameter list", {}},
    {"ProcessList", "system process list", {}},
    {"SessionList", "system session list", {}},
    {"UptimeGet", "system uptime get", {}},
    {"VersionGet", "system version get", {}},
};

class SystemHostileTest : public FullMachineTest,
                          public ::testing::WithParamInterface<HostileCase> {
 protected:
  static std::vector<std::string> FilesOf() {
    const FileWatch watch;
    Call(GetParam().path, GetParam().parameters);
    return watch.GetOpened();
  }

  // Replaces the content of a file. Does nothing and returns false for a folder or a missing file.
  bool Replace(const std::string& file, const std::string& content) {
    const std::string path = file.substr(1);
    if (!IsFile(path)) {
      return false;
    }
    File(path, content);
    return true;
  }

  static void ExpectResultOrError(const std::string& what) {
    const CommandResult result = Call(GetParam().path, GetParam().parameters);
    if (!result.GetErrors().empty()) {
      EXPECT_EQ(result.GetValue(), nullptr) << what;
      return;
    }
    ASSERT_NE(result.GetValue(), nullptr) << what;
    const std::string text = result.GetValue()->ToString();
    EXPECT_EQ(text.find('\x1b'), std::string::npos) << what;
    EXPECT_EQ(text.find('\0'), std::string::npos) << what;
    EXPECT_EQ(text.find('\xff'), std::string::npos) << what;
  }
};

TEST_P(SystemHostileTest, AnswersWhateverAFileContains) {
  RunThere([this] {
    const std::vector<std::pair<std::string, std::string>> contents = {
        {"nothing", ""},
        {"a line feed", "\n"},
        {"a NUL", std::string(1, '\0')},
        {"a large number", "9223372036854775807\n"},
        {"a small number", "-9223372036854775808\n"},
        {"a number beyond 64 bits", "99999999999999999999999\n"},
        {"bytes that are no text", "\xff\xfe\xc3\x28\n"},
        {"an escape sequence", "\x1b[2J\x1b]0;title\x07\n"},
        {"a long line", std::string(1 << 17, 'a')},
        {"many lines", std::string(1 << 14, '\n')},
        {"quotes", "\"'\\\"'`$(x)\n"},
    };
    for (const std::string& file : FilesOf()) {
      const std::string before = Content(file.substr(1));
      for (const auto& [what, content] : contents) {
        if (Replace(file, content)) {
          ExpectResultOrError(file + " contains " + what);
        }
      }
      Replace(file, before);
    }
  });
}

TEST_P(SystemHostileTest, AnswersWhateverIsChangedInAFile) {
  RunThere([this] {
    Random random;
    SCOPED_TRACE(random.HowToRepeat());
    for (const std::string& file : FilesOf()) {
      const std::string before = Content(file.substr(1));
      for (int i = 0; i < Rounds(10, 500) && !before.empty(); ++i) {
        std::string changed = before;
        changed[random.Below(changed.size())] = static_cast<char>(random.Below(256));
        changed.resize(1 + random.Below(changed.size()));
        if (Replace(file, changed)) {
          ExpectResultOrError(file);
        }
      }
      Replace(file, before);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Commands, SystemHostileTest, ::testing::ValuesIn(kCommands),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "plugins/shell-common/Descriptors.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Environment variables that change how a shell or another program behaves, or make it run code.
namespace Kestrel::Testing {
namespace {

using ::testing::HasSubstr;

/// Runs a script in the same way as the descriptors do. The script prints the names in a folder.
std::string RunScript() {
  const ScopedTempDir folder;
  folder.Write("names/caf\xc3\xa9", "x");
  const std::string common = ScriptPath("common.sh");
  const std::string script =
      folder.Write("script.sh", "here='" + common.substr(0, common.rfind('/')) +
                                    "'\n. \"$here/common.sh\"\ncd '" + folder.GetPath("names") +
                                    "'\nls >\"$work/names\"\ngrep caf <\"$work/names\" "
                                    ">\"$work/data\"\ndocument strings\n");
  return Witness("sh '" + script + "' 2>&1");
}

struct Variable {
  const char* name;
  const char* value;  // "@" stands for the path of a folder with code
};

class ScriptEnvironmentTest : public ::testing::TestWithParam<Variable> {};

TEST_P(ScriptEnvironmentTest, DoesNotChangeWhatAScriptDoes) {
  const ScopedTempDir code;
  code.Write("strict.pm", "print STDERR qq{ran\\n}; 1;\n");
  code.Write("ran", "echo ran >&2; echo ran\n");
  std::string value = GetParam().value;
  if (const std::size_t at = value.find('@'); at != std::string::npos) {
    value.replace(at, 1, code.GetPath());
  }
  const std::string expected = RunScript();
  EXPECT_THAT(expected, HasSubstr("<string>caf\xc3\xa9</string>"));
  const ScopedEnvironment environment(GetParam().name, value);
  EXPECT_EQ(RunScript(), expected);
}

constexpr Variable kVariables[] = {{"PERL5OPT", "-Mno_such_module"},
                                   {"PERL5LIB", "@"},
                                   {"PERLLIB", "@"},
                                   {"PERL_UNICODE", "SDA"},
                                   {"PERL5DB", "exit 1"},
                                   {"POSIXLY_CORRECT", "1"},
                                   {"BASH_ENV", "@/ran"},
                                   {"ENV", "@/ran"},
                                   {"CDPATH", "/:/usr"},
                                   {"GREP_OPTIONS", "--color=always"}};

INSTANTIATE_TEST_SUITE_P(Variables, ScriptEnvironmentTest, ::testing::ValuesIn(kVariables),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Tests the formatter that the environment requests for results on a terminal.

#include <gmock/gmock.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "support/PseudoTerminal.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;

// Commands that print the same disk with different formatters by default.
constexpr const char* kDescriptor = R"(<descriptor><version>1.0.0</version>
<namespaces><namespace path="disk"><description>Disks.</description></namespace></namespaces>
<commands>
@table@@simple@@json@@none@
</commands></descriptor>)";

constexpr const char* kCommand = R"(<command path="disk.@name@"><description>List.</description>
<input-spec/><output-spec><list type="structure"><structure typeName="Disk">
<field name="Size"><int/></field></structure></list></output-spec>
<format-parameters>@formatter@</format-parameters>
<execute>echo '&lt;output>&lt;list type="structure">&lt;structure typeName="Disk">&lt;field name="Size">&lt;int>4096&lt;/int>&lt;/field>&lt;/structure>&lt;/list>&lt;/output>'</execute>
</command>)";

std::string Replaced(std::string text, const std::string& mark, const std::string& by) {
  text.replace(text.find(mark), mark.size(), by);
  return text;
}

std::string MakeDescriptor() {
  std::string text = kDescriptor;
  for (const std::string& name : std::vector<std::string>{"table", "simple", "json", "none"}) {
    const std::string formatter = name == "none" ? "" : "<formatter>" + name + "</formatter>";
    const std::string command =
        Replaced(Replaced(kCommand, "@name@", name), "@formatter@", formatter);
    text = Replaced(text, "@" + name + "@", command);
  }
  return text;
}

class TerminalFormatterTest : public ::testing::Test {
 protected:
  // Returns a run that loads the commands. The environment requests a formatter unless
  // `isRequested` is false.
  VexilRun Run(std::vector<std::string> words, bool isRequested = true) const {
    words.insert(words.begin(), {"--plugin", path_});
    VexilRun run(words);
    run.WithEnvironment("TERM", "xterm").WithEnvironment("NO_COLOR", std::nullopt);
    if (isRequested) {
      run.WithEnvironment("VEXIL_TERMINAL_FORMATTER", "pretty");
    }
    return run;
  }

  // Returns what the run writes to a terminal, without the lines about missing folders.
  static std::string OnTerminal(const VexilRun& run) {
    PseudoTerminal terminal;
    terminal.Start([&run]() -> int { run.Exec(); });
    terminal.WaitForEnd();
    const std::string text = terminal.ReadRest();
    const std::size_t last = text.rfind("for plugin registration\r\n");
    return last == std::string::npos ? text : text.substr(text.find('\n', last) + 1);
  }

  std::string OnTerminal(const std::vector<std::string>& words, bool isRequested = true) const {
    return OnTerminal(Run(words, isRequested));
  }

  const ScopedTempDir folder_;
  const std::string path_ = folder_.Write("disk.xml", MakeDescriptor());
  const std::string table_ = "Size\r\n----\r\n4096  \r\n";
  const std::string pretty_ = "\x1b[1mSize\x1b[0m\r\n\x1b[36m4096\x1b[0m\r\n";
};

TEST_F(TerminalFormatterTest, ReplacesTableAndSimple) {
  EXPECT_EQ(OnTerminal({"disk", "table"}), pretty_);
  EXPECT_EQ(OnTerminal({"disk", "simple"}), pretty_);
  EXPECT_EQ(OnTerminal({"disk", "table"}, false), table_);
}

TEST_F(TerminalFormatterTest, LeavesOtherDefaultsAlone) {
  for (const char* name : {"json", "none"}) {
    EXPECT_EQ(OnTerminal({"disk", name}), OnTerminal({"disk", name}, false));
  }
  EXPECT_THAT(OnTerminal({"disk", "json"}), HasSubstr("\"Size\": 4096"));
}

TEST_F(TerminalFormatterTest, LeavesTheChoiceOfTheUserAlone) {
  const std::vector<std::string> words = {"--formatter", "simple", "disk", "table"};
  EXPECT_EQ(OnTerminal(words), OnTerminal(words, false));
  EXPECT_EQ(OnTerminal({"--formatter=pretty", "disk", "json"}), pretty_);
}

TEST_F(TerminalFormatterTest, LeavesHelpAndListingsAlone) {
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{},
                                             {"disk"},
                                             {"disk", "table", "--help"},
                                             {"disk", "table", "-h"},
                                             {"--help"},
                                             {"disk", "tabel"},
                                             {"disk", "table", "--nosuch"}}) {
    EXPECT_EQ(OnTerminal(words), OnTerminal(words, false));
  }
}

TEST_F(TerminalFormatterTest, LeavesOutputToAFileAlone) {
  EXPECT_EQ(Run({"disk", "table"}).Run().out, "Size\n----\n4096  \n");
}

TEST_F(TerminalFormatterTest, AppliesToTheLinesOfAFile) {
  const std::string lines = folder_.Write(
      "lines", "disk table\n# comment\n--formatter table disk table\ndisk \"table\" --help\n");
  const std::string shown = OnTerminal({"--input", lines});
  const std::string plain = OnTerminal({"--input", lines}, false);
  ASSERT_EQ(plain.substr(0, table_.size() * 2), table_ + table_);
  EXPECT_EQ(shown, pretty_ + plain.substr(table_.size()));
}

TEST_F(TerminalFormatterTest, PassesParametersToPretty) {
  EXPECT_EQ(OnTerminal(
                {"--format-param", "human=true", "--format-param", "color=never", "disk", "table"}),
            "   Size\r\n4.0 KiB\r\n");
  EXPECT_THAT(OnTerminal({"--format-param", "nosuch=1", "disk", "table"}),
              HasSubstr("Unknown format parameter: nosuch"));
}

TEST_F(TerminalFormatterTest, IgnoresARequestForAnotherFormatter) {
  VexilRun run = Run({"disk", "table"}, false);
  run.WithEnvironment("VEXIL_TERMINAL_FORMATTER", "json");
  EXPECT_EQ(OnTerminal(run), table_);
}

TEST_F(TerminalFormatterTest, PrintsColorsAsTheEnvironmentAllows) {
  VexilRun noColor = Run({"disk", "table"});
  noColor.WithEnvironment("NO_COLOR", "1");
  EXPECT_EQ(OnTerminal(noColor), "\x1b[1mSize\x1b[0m\r\n4096\r\n");
  VexilRun empty = Run({"disk", "table"});
  empty.WithEnvironment("NO_COLOR", "");
  EXPECT_EQ(OnTerminal(empty), pretty_);
  VexilRun dumb = Run({"disk", "table"});
  dumb.WithEnvironment("TERM", "dumb");
  EXPECT_EQ(OnTerminal(dumb), "Size\r\n4096\r\n");
  VexilRun always = Run({"--format-param", "color=always", "disk", "table"});
  always.WithEnvironment("TERM", "dumb").WithEnvironment("NO_COLOR", "1");
  EXPECT_EQ(OnTerminal(always), pretty_);
}

}  // namespace

}  // namespace Kestrel::Testing

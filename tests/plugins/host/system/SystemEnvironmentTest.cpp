// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "plugins/host/support/HostRun.h"
#include "support/Sanitizer.h"
#include "support/Witness.h"

// The commands in the namespace "system" in the real tool: in several formats, and in environments
// that differ from a shell of root. Some runs have no environment variables, another locale, a
// low limit of open files, an ordinary user, or a /proc that hides processes.
namespace Kestrel::Testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kTool = std::string(KESTREL_HOST_TOOL) + " --plugin=" + KESTREL_HOST_PLUGIN + " ";
constexpr char kAsNobody[] = "setpriv --reuid=65534 --regid=65534 --clear-groups ";

bool Succeeds(const std::string& command) {
  return std::system(("(" + command + ") >/dev/null 2>&1").c_str()) == 0;
}

// Returns the output of a shell command, including errors, followed by its status if it fails.
std::string OutcomeOf(const std::string& command) {
  return Witness("(" + command + ") 2>&1 || echo \"status $?\"");
}

// Returns whether the last line of the output is a status.
bool HasFailed(const std::string& outcome) {
  const std::size_t end = outcome.rfind('\n', outcome.size() - 2);
  return outcome.compare(end == std::string::npos ? 0 : end + 1, 7, "status ") == 0;
}

// Returns whether another user can run the tool from the build folder.
bool MayAnotherUserRunTheTool() {
  return ::geteuid() == 0 && Succeeds(kAsNobody + kTool + "system uptime get");
}

struct ToolCase {
  const char* name;
  const char* words;  // the command and its parameters
  bool isConstant;    // whether two successive answers are equal
};

const ToolCase kTools[] = {
    {"AccountGroups", "system account groups --name root", true},
    {"AccountList", "system account list", true},
    {"CpuCount", "system cpu count", true},
    {"CpuList", "system cpu list", false},
    {"CrontabList", "system crontab list --source system", true},
    {"LoadGet", "system load get", false},
    {"MemoryGet", "system memory get", false},
    {"ModuleCheck", "system module check --name kernel", true},
    {"ModuleList", "system module list", true},
    {"ParameterGet", "system parameter get --name kernel.ostype", true},
    {"ParameterList", "system parameter list --name kernel.os*", true},
    {"ProcessList", "system process list", false},
    {"SessionList", "system session list", true},
    {"UptimeGet", "system uptime get", false},
    {"VersionGet", "system version get", true},
};

class SystemEnvironmentTest : public ::testing::TestWithParam<ToolCase> {
 protected:
  static std::string Words() {
    std::string words = GetParam().words;
    const std::size_t star = words.find('*');
    return star == std::string::npos ? words : words.replace(star, 1, "\\*");
  }
};

TEST_P(SystemEnvironmentTest, AnswersInSeveralFormats) {
  for (const std::string format : {"simple", "xml", "python", "json"}) {
    EXPECT_FALSE(HasFailed(OutcomeOf(kTool + "--formatter=" + format + " " + Words()))) << format;
  }
  // Only a list of structures can be printed as a table.
  const bool isTable = std::string(GetParam().name).find("List") != std::string::npos;
  EXPECT_NE(HasFailed(OutcomeOf(kTool + "--formatter=table " + Words())), isTable);
}

TEST_P(SystemEnvironmentTest, ItsJsonAndXmlAreWellFormed) {
  EXPECT_TRUE(Succeeds(kTool + "--formatter=json " + Words() + " | jq ."));
  EXPECT_TRUE(Succeeds(kTool + "--formatter=xml " + Words() + " | xmllint --noout -"));
}

TEST_P(SystemEnvironmentTest, NeedsNoEnvironment) {
  const std::string outcome = OutcomeOf("env -i " + kTool + Words());
  EXPECT_FALSE(HasFailed(outcome)) << outcome;
  if (GetParam().isConstant) {
    EXPECT_EQ(outcome, OutcomeOf(kTool + Words()));
  }
}

TEST_P(SystemEnvironmentTest, DoesNotDependOnTheLocale) {
  if (GetParam().isConstant) {
    EXPECT_EQ(OutcomeOf("LC_ALL=tr_TR.UTF-8 " + kTool + Words()),
              OutcomeOf("LC_ALL=C " + kTool + Words()));
  }
}

TEST_P(SystemEnvironmentTest, AnswersAPlainUser) {
  if (!MayAnotherUserRunTheTool()) {
    GTEST_SKIP() << "no other user can run the tool here";
  }
  const std::string outcome = OutcomeOf(kAsNobody + kTool + Words());
  EXPECT_FALSE(HasFailed(outcome)) << outcome;
  if (GetParam().isConstant) {
    EXPECT_EQ(outcome, OutcomeOf(kTool + Words()));
  }
}

// With a limit of 3 to 15 open files, the command fails or its answer is complete. Only a constant
// answer can be checked for that.
TEST_P(SystemEnvironmentTest, AnswersCompletelyOrNotAtAllWithFewFiles) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer opens files of its own";
  }
  const std::string complete = OutcomeOf(kTool + Words());
  std::size_t errors = 0;
  for (int files = 3; files < 16; ++files) {
    const std::string outcome =
        OutcomeOf("ulimit -n " + std::to_string(files) + "; " + kTool + Words());
    if (HasFailed(outcome)) {
      ++errors;
    } else if (GetParam().isConstant) {
      EXPECT_EQ(outcome, complete) << files;
    }
  }
  EXPECT_GE(errors, 1u) << "nobody can answer without a file";
  EXPECT_LT(errors, 13u) << "fifteen files are enough";
}

TEST_P(SystemEnvironmentTest, AFullDeviceIsAnError) {
  EXPECT_TRUE(HasFailed(OutcomeOf(kTool + Words() + " >/dev/full")));
}

INSTANTIATE_TEST_SUITE_P(Commands, SystemEnvironmentTest, ::testing::ValuesIn(kTools),
                         [](const auto& test) { return test.param.name; });

// Mistakes of the user result in a message without rows, and status 1.
struct MistakeCase {
  const char* name;
  const char* words;
  const char* message;
};

const MistakeCase kMistakes[] = {
    {"NoSuchAccount", "system account groups --name 'no one'", "There is no account 'no one'"},
    {"NoSuchParameter", "system parameter get --name vm.no_such",
     "There is no parameter 'vm.no_such'"},
    {"GroupOfParameters", "system parameter get --name vm", "'vm' is a group of parameters"},
    {"NoSuchProcess", "system process signal --id 4194304", "There is no process 4194304"},
    {"NoSuchProcessName", "system process signal --name 'no such name'",
     "There is no process 'no such name'"},
    {"NoSuchSignal", "system process signal --id 4194304 --signal 65",
     "There is no such signal: '65'; --signal is a name such as TERM or a number from 1 to 64"},
    {"NoSuchState", "system process list --state Lazy",
     "There is no such state: 'Lazy'; --state is running, sleeping, waiting, stopped, traced, "
     "zombie, idle, parked, dead, or the letter that ps prints"},
    {"NoSuchField", "system session list --sort Colour",
     "There is no field 'Colour' to sort by. Sort by one of: Host, Process, Started, Terminal, "
     "User."},
};

class SystemMistakeTest : public ::testing::TestWithParam<MistakeCase> {};

TEST_P(SystemMistakeTest, PrintsOnlyItsMessageAndFails) {
  EXPECT_EQ(OutcomeOf(kTool + GetParam().words),
            std::string("Errors: \n") + GetParam().message + "\nstatus 1\n");
}

INSTANTIATE_TEST_SUITE_P(Mistakes, SystemMistakeTest, ::testing::ValuesIn(kMistakes),
                         [](const auto& test) { return test.param.name; });

// A /proc that is mounted with an option that hides processes.
class HiddenProcessTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!MayAnotherUserRunTheTool() || !Succeeds(MountedWith("invisible", "true"))) {
      GTEST_SKIP() << "this needs root, another user and a /proc of our own";
    }
  }

  static std::string MountedWith(const std::string& option, const std::string& command) {
    return "unshare --mount sh -ec 'mount -t proc -o hidepid=" + option + " none /proc; " +
           command + "'";
  }

  static std::string List(const std::string& option, const std::string& words) {
    return OutcomeOf(MountedWith(option, kAsNobody + kTool + "system process list " + words));
  }
};

TEST_F(HiddenProcessTest, InvisibleOnesAreAnError) {
  EXPECT_EQ(List("invisible", ""),
            "Errors: \nThe kernel hides the processes of other users from you; list your own with "
            "--user\nstatus 1\n");
}

TEST_F(HiddenProcessTest, OwnProcessesAreListed) {
  for (const std::string user : {"65534", "nobody", "nobody --user 65534"}) {
    EXPECT_THAT(List("invisible", "--user " + user), AllOf(StartsWith("Id "), HasSubstr("vexil")));
  }
  EXPECT_THAT(List("invisible", "--user nobody --user root"), HasSubstr("status 1"));
}

TEST_F(HiddenProcessTest, UnreadableOnesAreAnError) {
  EXPECT_EQ(List("noaccess", ""),
            "Errors: \nUnable to read /proc/1/stat: Operation not permitted\nstatus 1\n");
}

TEST_F(HiddenProcessTest, RootSeesTheFirstProcess) {
  const std::string outcome =
      OutcomeOf(MountedWith("invisible", kTool + "--formatter=json system process list --id 1"));
  EXPECT_THAT(outcome, AllOf(HasSubstr("\"Id\": 1"), Not(HasSubstr("status"))));
}

}  // namespace
}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/host/system/ScopedProcess.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands in the namespace "system", compared with other programs. If a value can change, the
// other program runs before and after the command.
namespace Kestrel::Testing {
namespace {

using MetaObj::MetaStruct;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::Not;
using Structure = std::shared_ptr<MetaStruct>;

std::string WitnessLine(const std::string& command) {
  std::string text = Witness(command);
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  return text;
}

long WitnessNumber(const std::string& command) { return std::stol(WitnessLine(command)); }

// Expects `value` to be between `before` and `after`, or outside that range by at most `room`. This
// allows for rounding, and for changes that other programs cause.
void ExpectBetween(long value, long before, long after, long room, const std::string& what) {
  EXPECT_GE(value, std::min(before, after) - room) << what;
  EXPECT_LE(value, std::max(before, after) + room) << what;
}

// The machine as a whole.

TEST(SystemVersionGetTest, AgreesWithUname) {
  const Structure structure = Call("system version get").GetStruct();
  EXPECT_EQ(TextOf(structure, "Host Name"), WitnessLine("uname -n"));
  EXPECT_EQ(TextOf(structure, "Kernel"), WitnessLine("uname -s"));
  EXPECT_EQ(TextOf(structure, "Release"), WitnessLine("uname -r"));
  EXPECT_EQ(TextOf(structure, "Build"), WitnessLine("uname -v"));
  EXPECT_EQ(TextOf(structure, "Architecture"), WitnessLine("uname -m"));
  EXPECT_EQ(TextOf(structure, "Distribution"), WitnessLine(". /etc/os-release; echo $PRETTY_NAME"));
}

TEST(SystemUptimeGetTest, AgreesWithUptime) {
  const char* const seconds = "cut -d. -f1 /proc/uptime";
  const char* const idle = "cut -d' ' -f2 /proc/uptime | cut -d. -f1";
  const long before = WitnessNumber(seconds);
  const long idleBefore = WitnessNumber(idle);
  const Structure structure = Call("system uptime get").GetStruct();
  ExpectBetween(NumberOf(structure, "Seconds"), before, WitnessNumber(seconds), 0, "Seconds");
  ExpectBetween(NumberOf(structure, "Idle Seconds"), idleBefore, WitnessNumber(idle), 0, "Idle");
  // The two programs compute the time of the boot from different clocks.
  const long started = WitnessNumber("date -d \"$(uptime -s)\" +%s");
  const long own = WitnessNumber("date -d '" + TextOf(structure, "Started") + "' +%s");
  ExpectBetween(own, started, started, 1, "Started");
}

TEST(SystemUptimeGetTest, TheTextAgreesWithTheSeconds) {
  const Structure structure = Call("system uptime get").GetStruct();
  const long seconds = NumberOf(structure, "Seconds");
  const std::string expected =
      WitnessLine("s=" + std::to_string(seconds) +
                  "; [ $s -lt 86400 ] || printf '%d-' $((s / 86400)); "
                  "printf '%02d:%02d:%02d' $((s % 86400 / 3600)) $((s % 3600 / 60)) $((s % 60))");
  EXPECT_EQ(TextOf(structure, "Up"), expected);
}

TEST(SystemLoadGetTest, AgreesWithTheKernel) {
  const auto before = WordsIn(Witness("cat /proc/loadavg"));
  const Structure structure = Call("system load get").GetStruct();
  const auto after = WordsIn(Witness("cat /proc/loadavg"));
  EXPECT_THAT(TextOf(structure, "One Minute"), AnyOf(before[0], after[0]));
  EXPECT_THAT(TextOf(structure, "Five Minutes"), AnyOf(before[1], after[1]));
  EXPECT_THAT(TextOf(structure, "Fifteen Minutes"), AnyOf(before[2], after[2]));
  EXPECT_GE(NumberOf(structure, "Running"), 1);
  // Other programs start and end tasks at the same time.
  const auto tasks = [](const std::string& word) {
    return std::stol(word.substr(word.find('/') + 1));
  };
  ExpectBetween(NumberOf(structure, "Tasks"), tasks(before[3]), tasks(after[3]), 200, "Tasks");
}

TEST(SystemLoadGetTest, AgreesWithUptime) {
  // The kernel updates the load every five seconds, so at least one of four quick attempts falls
  // within one such interval.
  for (int attempt = 0;; ++attempt) {
    const Structure structure = Call("system load get").GetStruct();
    const std::string own = TextOf(structure, "One Minute") + ", " +
                            TextOf(structure, "Five Minutes") + ", " +
                            TextOf(structure, "Fifteen Minutes");
    const std::string other = WitnessLine("uptime | sed 's/.*average: //'");
    if (own == other || attempt == 3) {
      EXPECT_EQ(own, other);
      return;
    }
  }
}

TEST(SystemMemoryGetTest, AgreesWithFree) {
  const auto look = [] {
    std::map<std::string, long> figures;
    const auto lines = WitnessLines("free --bytes --wide");
    const auto physical = WordsIn(lines[1]);
    const char* const names[] = {"Total",   "Used",   "Free",     "Shared",
                                 "Buffers", "Cached", "Available"};
    for (std::size_t i = 0; i < 7; ++i) {
      figures[names[i]] = std::stol(physical[i + 1]);
    }
    const auto swap = WordsIn(lines[2]);
    figures["Swap Total"] = std::stol(swap[1]);
    figures["Swap Used"] = std::stol(swap[2]);
    figures["Swap Free"] = std::stol(swap[3]);
    return figures;
  };
  const auto before = look();
  const Structure structure = Call("system memory get").GetStruct();
  const auto after = look();
  const auto physical = std::dynamic_pointer_cast<MetaStruct>(structure->GetField("Physical"));
  const auto swap = std::dynamic_pointer_cast<MetaStruct>(structure->GetField("Swap"));
  // Other programs may allocate or free up to 512 MiB at the same time.
  constexpr long kRoom = 512L * 1024 * 1024;
  const auto bytes = [](const Structure& memory, const std::string& name) {
    return NumberOf(memory, name + " Bytes");
  };
  EXPECT_EQ(bytes(physical, "Total"), before.at("Total"));
  for (const char* const name : {"Used", "Free", "Shared", "Buffers", "Cached", "Available"}) {
    ExpectBetween(bytes(physical, name), before.at(name), after.at(name), kRoom, name);
  }
  EXPECT_EQ(bytes(physical, "Used"), bytes(physical, "Total") - bytes(physical, "Available"));
  EXPECT_EQ(bytes(swap, "Total"), before.at("Swap Total"));
  for (const std::string name : {"Used", "Free"}) {
    ExpectBetween(bytes(swap, name), before.at("Swap " + name), after.at("Swap " + name), kRoom,
                  name);
  }
}

TEST(SystemMemoryGetTest, PrintsFiguresWithUnits) {
  const std::string text = Print("system memory get", {}, 80);
  EXPECT_THAT(text, HasSubstr("SystemMemory:\n   Physical: \n         Total    : "));
  EXPECT_THAT(text, HasSubstr(" GiB\n"));
}

// Processors.

TEST(SystemCpuListTest, AgreesWithLscpu) {
  std::vector<std::string> expected;
  for (const std::string& line :
       WitnessLines("lscpu --all --parse=CPU,ONLINE,NODE,SOCKET,CORE | grep -v '^#'")) {
    expected.push_back(line);
  }
  std::vector<std::string> found;
  for (const Structure& structure : Call("system cpu list").GetStructs()) {
    const auto known = [&structure](const char* field) {
      const long number = NumberOf(structure, field);
      return number < 0 ? std::string() : std::to_string(number);
    };
    found.push_back(TextOf(structure, "Number") + "," +
                    (TextOf(structure, "Online") == "true" ? "Y" : "N") + "," + known("Node") +
                    "," + known("Socket") + "," + known("Core"));
  }
  EXPECT_EQ(found, expected);
}

TEST(SystemCpuListTest, AgreesWithLscpuAboutTheModel) {
  const auto value = [](const std::string& name) {
    return WitnessLine("lscpu | sed -n 's/^" + name + ": *//p' | head -1");
  };
  for (const Structure& structure : Call("system cpu list").GetStructs()) {
    EXPECT_EQ(TextOf(structure, "Model"), value("Model name"));
    EXPECT_EQ(TextOf(structure, "Vendor"), value("Vendor ID"));
  }
}

TEST(SystemCpuListTest, AgreesWithLscpuAboutSiblings) {
  // The processors of each core of each socket.
  std::map<std::string, std::string> siblings;
  std::map<std::string, std::string> cores;
  for (const std::string& line :
       WitnessLines("lscpu --online --parse=CPU,CORE,SOCKET | grep -v '^#'")) {
    const std::string cpu = line.substr(0, line.find(','));
    const std::string core = line.substr(line.find(','));
    cores[cpu] = core;
    siblings[core] += (siblings[core].empty() ? "" : ", ") + cpu;
  }
  for (const Structure& structure : Call("system cpu list", {{"online", "true"}}).GetStructs()) {
    EXPECT_EQ(TextOf(structure, "Siblings"), siblings[cores[TextOf(structure, "Number")]]);
  }
}

TEST(SystemCpuListTest, AgreesWithTheKernelAboutTheFrequency) {
  const std::string look = "sed -n 's/^cpu MHz[^0-9]*\\([0-9]*\\)[.]/\\1/p' /proc/cpuinfo";
  const auto before = WitnessLines(look);
  const auto structures = Call("system cpu list", {{"online", "true"}}).GetStructs();
  const auto after = WitnessLines(look);
  if (before.empty()) {
    EXPECT_THAT(FieldOf(structures, "Frequency"), Each("unknown")) << "not every kernel tells";
    return;
  }
  ASSERT_EQ(structures.size(), before.size());
  for (std::size_t i = 0; i < structures.size(); ++i) {
    // If the frequency changed between the readings, it may differ from both of them by up to 1
    // GHz.
    ExpectBetween(NumberOf(structures[i], "Frequency Kilohertz"), std::stol(before[i]),
                  std::stol(after[i]), before[i] == after[i] ? 1 : 1000000, "Frequency");
    EXPECT_EQ(TextOf(structures[i], "Frequency"),
              std::to_string(NumberOf(structures[i], "Frequency Kilohertz") / 1000) + " MHz");
  }
}

TEST(SystemCpuListTest, FiltersByNumberAndState) {
  const auto numbers = [](const Parameters& parameters) {
    return FieldOf(Call("system cpu list", parameters).GetStructs(), "Number");
  };
  EXPECT_THAT(numbers({{"number", "0"}}), ElementsAre("0"));
  EXPECT_THAT(numbers({{"number", "65535"}}), IsEmpty());
  EXPECT_EQ(numbers({{"online", "yes"}, {"online", "no"}}), numbers({}));
  EXPECT_EQ(numbers({{"online", "true"}}).size(),
            static_cast<std::size_t>(WitnessNumber("getconf _NPROCESSORS_ONLN")));
  EXPECT_THAT(numbers({{"number", "0"}, {"online", "f"}}), IsEmpty());
}

TEST(SystemCpuListTest, RefusesOtherValues) {
  EXPECT_THAT(Call("system cpu list", {{"number", "-1"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'number'. Expected integer in the "
                          "range 0-65536"));
  EXPECT_THAT(Call("system cpu list", {{"number", "x"}}).GetErrors(),
              ElementsAre("Invalid data 'x' for parameter number expected type Integer"));
  EXPECT_THAT(Call("system cpu list", {{"online", "maybe"}}).GetErrors(),
              ElementsAre("Invalid data 'maybe' for parameter online expected one of [1, 0, y, n, "
                          "true, false, True, False, yes, no, t, f, T, F]"));
}

TEST(SystemCpuCountTest, AgreesWithGetconf) {
  EXPECT_EQ(Call("system cpu count").output->GetRootObject()->ToString(),
            WitnessLine("getconf _NPROCESSORS_ONLN"));
  EXPECT_EQ(Call("system cpu count", {{"all", ""}}).output->GetRootObject()->ToString(),
            WitnessLine("lscpu --all --parse=CPU | grep -vc '^#'"));
  EXPECT_EQ(Print("system cpu count", {{"a", ""}}, 80),
            WitnessLine("lscpu --all --parse=CPU | grep -vc '^#'") + "\n");
}

// Processes.

Structure FindProcess(const std::string& id) {
  const auto structures = Call("system process list", {{"id", id}}).GetStructs();
  EXPECT_EQ(structures.size(), 1u) << id;
  return structures.empty() ? nullptr : structures[0];
}

// Returns the words that ps prints for each process, by the number of the process.
std::map<std::string, std::vector<std::string>> LookAtProcesses() {
  std::map<std::string, std::vector<std::string>> processes;
  for (const std::string& line :
       WitnessLines("ps -e -ww -o pid=,ppid=,euser:40=,nlwp=,ni=,vsz=,rss=,cputimes=,comm=")) {
    const auto words = WordsIn(line, 9);
    processes[words[0]] = words;
  }
  return processes;
}

TEST(SystemProcessListTest, AgreesWithPsAboutEveryProcess) {
  const auto before = LookAtProcesses();
  const auto structures = Call("system process list").GetStructs();
  const auto after = LookAtProcesses();
  std::size_t compared = 0;
  std::set<std::string> found;
  for (const Structure& structure : structures) {
    const std::string id = TextOf(structure, "Id");
    found.insert(id);
    const auto first = before.find(id);
    const auto second = after.find(id);
    if (first == before.end() || second == after.end() || first->second[8] != second->second[8]) {
      continue;  // started, ended or executed another program between the calls
    }
    const auto isEither = [&](std::size_t column, const char* field) {
      EXPECT_THAT(TextOf(structure, field), AnyOf(first->second[column], second->second[column]))
          << id << " " << field;
    };
    const auto isBetween = [&](std::size_t column, const char* field, long room) {
      ExpectBetween(NumberOf(structure, field), std::stol(first->second[column]),
                    std::stol(second->second[column]), room, id + " " + field);
    };
    const auto isBetweenKib = [&](std::size_t column, const char* field) {
      ExpectBetween(NumberOf(structure, field) / 1024, std::stol(first->second[column]),
                    std::stol(second->second[column]), 64 * 1024, id + " " + field);
    };
    isEither(1, "Parent");
    isEither(2, "User");
    isBetween(3, "Threads", 4);
    if (first->second[4] != "-") {  // ps does not print the value of a real-time task
      isEither(4, "Nice");
    }
    isBetween(7, "Seconds", 1);
    // The memory of a process that is working may change between the calls.
    if (first->second[5] == second->second[5]) {
      isBetweenKib(5, "Virtual Bytes");
      isBetweenKib(6, "Resident Bytes");
    }
    ++compared;
  }
  EXPECT_GT(compared, 5u);
  // No process that existed during all calls is missing.
  for (const auto& [id, words] : before) {
    EXPECT_TRUE(after.count(id) == 0 || found.count(id) == 1) << id << " " << words[8];
  }
}

TEST(SystemProcessListTest, AgreesWithPsAboutAProcessThatDoesNotChange) {
  const ScopedProcess process("still");
  const std::string id = process.GetId();
  process.WaitUntilItSleeps();
  const Structure structure = FindProcess(id);
  const auto ps = [&id](const std::string& column) {
    return WitnessLine("ps -ww -p " + id + " -o " + column + "=");
  };
  const auto number = [&ps](const std::string& column) { return std::stol(ps(column)); };
  EXPECT_EQ(NumberOf(structure, "Parent"), number("ppid"));
  EXPECT_EQ(TextOf(structure, "User"), WordsIn(ps("euser:40"))[0]);
  EXPECT_EQ(TextOf(structure, "State"), "sleeping");
  EXPECT_EQ(ps("s"), "S");
  EXPECT_EQ(NumberOf(structure, "Threads"), number("nlwp"));
  EXPECT_EQ(NumberOf(structure, "Nice"), number("ni"));
  EXPECT_EQ(NumberOf(structure, "Virtual Bytes"), number("vsz") * 1024);
  EXPECT_EQ(NumberOf(structure, "Resident Bytes"), number("rss") * 1024);
  EXPECT_EQ(TextOf(structure, "Time"), ps("time"));
  EXPECT_EQ(NumberOf(structure, "Seconds"), number("cputimes"));
  EXPECT_EQ(TextOf(structure, "Name"), ps("comm"));
  EXPECT_EQ(TextOf(structure, "Command"), ps("args"));
  EXPECT_EQ(TextOf(structure, "Kernel"), "false");
  const std::string terminal = TextOf(structure, "Terminal");
  EXPECT_EQ(terminal == "none" ? "?" : terminal, WordsIn(ps("tty"))[0]);
  // ps computes the time of the boot from a different clock.
  const long started = WitnessNumber("date -d \"$(ps -p " + id + " -o lstart=)\" +%s");
  ExpectBetween(WitnessNumber("date -d '" + TextOf(structure, "Started") + "' +%s"), started,
                started, 1, "Started");
}

// The process uses a processor all the time.
TEST(SystemProcessListTest, AgreesWithPsAboutTheShareOfAProcessor) {
  const std::string id = WitnessLine("sh -c 'while :; do :; done' >/dev/null & echo $!");
  ::sleep(1);
  const auto share = [&id] { return std::stod(WitnessLine("ps -p " + id + " -o pcpu=")); };
  const double before = share();
  const Structure structure = FindProcess(id);
  const double after = share();
  WitnessLine("kill -9 " + id);
  // The command and ps divide by the time since the start, but ps uses whole seconds.
  const double own = static_cast<double>(NumberOf(structure, "CPU Hundredths")) / 100;
  EXPECT_GT(own, 5);
  EXPECT_GE(own, std::min(before, after) / 2);
  EXPECT_LE(own, std::max(before, after) * 2);
}

TEST(SystemProcessListTest, ShowsNamesOfAnyBytesSafely) {
  const std::pair<const char*, const char*> cases[] = {
      {"a b", "a b"},
      {"a) S (b", "a) S (b"},
      {"a\nb", "a\\x0ab"},
      {"\xff\xfe", "\\xff\\xfe"},
      {"\x1b[31m", "\\x1b[31m"},
      {"caf\xc3\xa9", "caf\xc3\xa9"},
  };
  for (const auto& [name, expected] : cases) {
    const ScopedProcess process(name);
    EXPECT_EQ(TextOf(FindProcess(process.GetId()), "Name"), expected);
  }
}

TEST(SystemProcessListTest, ReportsStates) {
  EXPECT_EQ(TextOf(FindProcess(std::to_string(::getpid())), "State"), "running");
  const ScopedProcess zombie("late", true);
  const Structure structure = FindProcess(zombie.GetId());
  EXPECT_EQ(TextOf(structure, "State"), "zombie");
  EXPECT_EQ(TextOf(structure, "Command"), "[late]");
  const ScopedProcess stopped("halt");
  ::kill(stopped.GetNumber(), SIGSTOP);
  ASSERT_EQ(::waitpid(stopped.GetNumber(), nullptr, WUNTRACED), stopped.GetNumber());
  EXPECT_EQ(TextOf(FindProcess(stopped.GetId()), "State"), "stopped");
  const auto states = FieldOf(
      Call("system process list", {{"state", "zombie"}, {"s", "stopped"}}).GetStructs(), "State");
  EXPECT_THAT(states, AllOf(Contains("zombie"), Contains("stopped"),
                            Each(AnyOf(std::string("zombie"), std::string("stopped")))));
}

TEST(SystemProcessListTest, FiltersByUserNameOrNumber) {
  const auto ids = [](const Parameters& parameters) {
    return FieldOf(Call("system process list", parameters).GetStructs(), "Id");
  };
  const std::string self = std::to_string(::getpid());
  const std::string user = WitnessLine("id -un");
  EXPECT_THAT(ids({{"user", user}}), Contains(self));
  EXPECT_THAT(ids({{"u", std::to_string(::geteuid())}}), Contains(self));
  EXPECT_THAT(ids({{"user", "no such user"}}), IsEmpty());
  EXPECT_THAT(ids({{"user", "no such user"}, {"user", user}}), Contains(self));
  EXPECT_THAT(FieldOf(Call("system process list", {{"user", user}}).GetStructs(), "User"),
              Each(user));
}

TEST(SystemProcessListTest, FiltersByNameAndRegularExpression) {
  const ScopedProcess process("kestrel.odd");
  const auto ids = [](const Parameters& parameters) {
    return FieldOf(Call("system process list", parameters).GetStructs(), "Id");
  };
  EXPECT_THAT(ids({{"name", "kestrel.odd"}}), ElementsAre(process.GetId()));
  EXPECT_THAT(ids({{"name", "kestrel*dd"}}), ElementsAre(process.GetId()));
  EXPECT_THAT(ids({{"name", "trel.o"}}), IsEmpty());
  EXPECT_THAT(ids({{"match", "^kestrel\\.odd$"}}), ElementsAre(process.GetId()));
  EXPECT_THAT(ids({{"match", "trel.o"}}), Contains(process.GetId()));
  EXPECT_THAT(ids({{"match", "^odd"}}), IsEmpty());
  // The process has the command line of the test program, which contains the expression.
  EXPECT_THAT(ids({{"match", "kestrel_host_tests"}}), Not(Contains(process.GetId())));
  EXPECT_THAT(ids({{"match", "kestrel_host_tests"}, {"full", ""}}), Contains(process.GetId()));
  EXPECT_THAT(Call("system process list", {{"match", "(a"}}).GetErrors(),
              ElementsAre(HasSubstr("'(a' is not a regular "
                                    "expression: ")));
}

TEST(SystemProcessListTest, FiltersByMemory) {
  const auto structures = Call("system process list", {{"minimum-memory", "1000000"}}).GetStructs();
  EXPECT_THAT(structures, Not(IsEmpty()));
  for (const Structure& structure : structures) {
    EXPECT_GE(NumberOf(structure, "Resident Bytes"), 1000000);
  }
  EXPECT_THAT(Call("system process list", {{"minimum-memory", "1152921504606846976"}}).GetStructs(),
              IsEmpty());
}

TEST(SystemProcessListTest, SkipsKernelThreadsOnRequest) {
  const auto kernel = [](const Parameters& parameters) {
    return FieldOf(Call("system process list", parameters).GetStructs(), "Kernel");
  };
  EXPECT_THAT(kernel({{"kernel-threads", "false"}}), Each("false"));
  if (WitnessNumber("ps --ppid 2 -o pid= | wc -l") > 0) {
    EXPECT_THAT(kernel({}), Contains("true"));
    EXPECT_THAT(kernel({{"kernel-threads", "true"}}), Contains("true"));
  }
}

TEST(SystemProcessListTest, Sorts) {
  const auto numbers = [](const char* field, const Parameters& order) {
    std::vector<long> values;
    for (const Structure& structure : Call("system process list", order).GetStructs()) {
      values.push_back(NumberOf(structure, field));
    }
    return values;
  };
  const auto ids = numbers("Id", {});
  EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
  const auto memory = numbers("Resident Bytes", {{"sort", "Resident"}, {"descending", ""}});
  EXPECT_TRUE(std::is_sorted(memory.rbegin(), memory.rend()));
  const auto time = numbers("Seconds", {{"sort", "Seconds"}, {"descending", ""}});
  EXPECT_TRUE(std::is_sorted(time.rbegin(), time.rend()));
  const auto names = FieldOf(Call("system process list", {{"sort", "Name"}}).GetStructs(), "Name");
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST(SystemProcessListTest, RefusesOtherValues) {
  const auto errors = [](const Parameters& parameters) {
    return Call("system process list", parameters).GetErrors();
  };
  EXPECT_THAT(errors({{"state", "lazy"}}),
              ElementsAre("There is no such state: 'lazy'; --state is running, sleeping, waiting, "
                          "stopped, traced, zombie, idle, parked, dead, or the letter that ps "
                          "prints"));
  EXPECT_THAT(errors({{"state", "lazy"}, {"match", "("}}), ::testing::SizeIs(2))
      << "all mistakes at once";
  EXPECT_THAT(errors({{"sort", "size"}}),
              ElementsAre(HasSubstr("There is no field 'size' to sort by. Sort by one of: ")));
  EXPECT_THAT(
      errors({{"minimum-memory", "-1"}}),
      ElementsAre("Invalid data constraint for parameter 'minimum-memory'. Expected integer "
                  "in the range 0-1152921504606846976"));
  EXPECT_THAT(errors({{"id", "0"}}),
              ElementsAre("Invalid data constraint for parameter 'id'. Expected integer in the "
                          "range 1-4194304"));
  EXPECT_THAT(errors({{"full", "x"}}),
              ElementsAre("Invalid data 'x' for parameter full.  This parameter is a flag and "
                          "cannot accept any values. "));
}

TEST(SystemProcessListTest, SurvivesProcessesThatVanishWhileTheyAreListed) {
  const pid_t storm = ::fork();
  if (storm == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::signal(SIGCHLD, SIG_IGN);
    for (;;) {
      if (::fork() == 0) {
        ::_exit(0);
      }
    }
  }
  for (int i = 0; i < 20; ++i) {
    const CommandResult result = Call("system process list");
    EXPECT_THAT(result.GetErrors(), IsEmpty());
    EXPECT_THAT(FieldOf(result.GetStructs(), "Id"), Contains(std::to_string(::getpid())));
  }
  ::kill(storm, SIGKILL);
  ::waitpid(storm, nullptr, 0);
}

TEST(SystemProcessListTest, PrintsATable) {
  const ScopedProcess process("still");
  process.WaitUntilItSleeps();
  const std::string text = Print("system process list", {{"id", process.GetId()}}, 80);
  EXPECT_THAT(text, ::testing::MatchesRegex("Id +User +CPU +Resident Bytes +Name\n"
                                            "-+ +-+ +-+ +-+ +----\n"
                                            " *[0-9]+ +[^ ]+ +[0-9.]+ % +[0-9]+ +still\n"));
}

// Parameters of the kernel.

TEST(SystemParameterListTest, AgreesWithSysctl) {
  for (const char* const group : {"vm", "kernel.random", "net.ipv4.conf.lo", "fs"}) {
    const std::string command = std::string("sysctl ") + group + " 2>/dev/null; true";
    const auto before = WitnessLines(command);
    std::vector<std::string> found;
    for (const Structure& structure :
         Call("system parameter list", {{"under", group}}).GetStructs()) {
      if (TextOf(structure, "Value").empty() || TextOf(structure, "Readable") == "false") {
        continue;  // sysctl does not print parameters without a value
      }
      found.push_back(TextOf(structure, "Name") + " = " + TextOf(structure, "Value"));
    }
    const auto after = WitnessLines(command);
    std::set<std::string> expected;
    for (const auto* const lines : {&before, &after}) {
      for (std::string line : *lines) {
        std::replace(line.begin(), line.end(), '\t', ' ');
        expected.insert(line);
      }
    }
    const auto name = [](const std::string& line) { return line.substr(0, line.find(" = ")); };
    std::vector<std::string> names;
    for (const std::string& line : found) {
      names.push_back(name(line));
    }
    std::set<std::string> expectedNames;
    for (const std::string& line : expected) {
      expectedNames.insert(name(line));
    }
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expectedNames) << group;
    std::size_t equal = 0;
    for (const std::string& line : found) {
      equal += expected.count(line);
    }
    // Up to four values, such as counters and random numbers, may differ. Every other value equals
    // one of those that sysctl printed before and after the command.
    EXPECT_GE(equal + 4, found.size()) << group;
  }
}

TEST(SystemParameterListTest, FiltersByExpressionAndByWhatCanBeChanged) {
  const auto names = [](const Parameters& parameters) {
    return FieldOf(Call("system parameter list", parameters).GetStructs(), "Name");
  };
  EXPECT_THAT(names({{"name", "vm.swappiness"}}), ElementsAre("vm.swappiness"));
  EXPECT_THAT(names({{"match", "^vm\\.swappiness$"}}), ElementsAre("vm.swappiness"));
  EXPECT_THAT(names({{"under", "vm"}, {"match", "dirty"}}),
              AllOf(Contains("vm.dirty_ratio"), Each(HasSubstr("dirty"))));
  const auto writable = names({{"under", "kernel"}, {"writable", ""}});
  EXPECT_THAT(writable, Contains("kernel.domainname"));
  EXPECT_THAT(writable, Not(Contains("kernel.osrelease")));
  EXPECT_THAT(names({{"under", "kernel"}}), Contains("kernel.osrelease"));
  EXPECT_THAT(FieldOf(Call("system parameter list", {{"w", ""}}).GetStructs(), "Writable"),
              Each("true"));
}

TEST(SystemParameterGetTest, AgreesWithSysctl) {
  for (const char* const name : {"kernel.osrelease", "kernel.hostname", "net.ipv4.tcp_rmem",
                                 "vm.swappiness", "net/ipv4/conf/lo/mtu", "kernel.printk"}) {
    const CommandResult result = Call("system parameter get", {{"name", name}});
    if (::access(
            (std::string("/proc/sys/") + WitnessLine(std::string("echo ") + name + " | tr . /"))
                .c_str(),
            F_OK) != 0) {
      EXPECT_THAT(result.GetErrors(), ElementsAre(HasSubstr("There is no parameter")));
      continue;
    }
    EXPECT_EQ(result.output->GetRootObject()->ToString(),
              WitnessLine(std::string("sysctl -n ") + name));
  }
}

TEST(SystemParameterGetTest, ReportsUnknownInvalidAndMissingNames) {
  const auto errors = [](const Parameters& parameters) {
    return Call("system parameter get", parameters).GetErrors();
  };
  EXPECT_THAT(errors({{"name", "vm.no_such"}}), ElementsAre("There is no parameter "
                                                            "'vm.no_such'"));
  EXPECT_THAT(errors({{"name", "vm"}}), ElementsAre("'vm' is a group of parameters"));
  EXPECT_THAT(errors({{"name", "../secret"}}),
              ElementsAre("Invalid data constraint for parameter 'name'. Value does not match the "
                          "expected regular expression ([^./]+([./][^./]+)*)"));
  EXPECT_THAT(errors({}), ElementsAre("Missing required parameter --name"));
}

TEST(SystemParameterSetTest, AcceptsTheCurrentValue) {
  if (::access("/proc/sys/vm/swappiness", W_OK) != 0) {
    GTEST_SKIP() << "parameters are read-only here";
  }
  const std::string value = WitnessLine("sysctl -n vm.swappiness");
  const Structure structure =
      Call("system parameter set", {{"name", "vm.swappiness"}, {"value", value}}).GetStruct();
  EXPECT_EQ(TextOf(structure, "Name"), "vm.swappiness");
  EXPECT_EQ(TextOf(structure, "Before"), value);
  EXPECT_EQ(TextOf(structure, "After"), value);
  EXPECT_EQ(Print("system parameter set", {{"n", "vm.swappiness"}, {"v", value}}, 80),
            "vm.swappiness:\n   Before: " + value + "\n   After : " + value + "\n");
}

TEST(SystemParameterSetTest, ChangesTheValueThatSysctlPrints) {
  const char* const file = "/proc/sys/vm/stat_interval";
  if (::access(file, W_OK) != 0) {
    GTEST_SKIP() << "parameters are read-only here";
  }
  const std::string value = WitnessLine("sysctl -n vm.stat_interval");
  const std::string other = std::to_string(std::stol(value) + 1);
  const Structure structure =
      Call("system parameter set", {{"name", "vm.stat_interval"}, {"value", other}}).GetStruct();
  EXPECT_EQ(WitnessLine("sysctl -n vm.stat_interval"), other);
  EXPECT_EQ(TextOf(structure, "Before"), value);
  EXPECT_EQ(TextOf(structure, "After"), other);
  Call("system parameter set", {{"name", "vm.stat_interval"}, {"value", value}});
  EXPECT_EQ(WitnessLine("sysctl -n vm.stat_interval"), value);
}

TEST(SystemParameterSetTest, ReportsAMissingPermission) {
  const std::string value = WitnessLine("sysctl -n vm.swappiness");
  Call("system uptime get");  // loads the plug-in, which the user may not be allowed to read
  CommandResult result;
  {
    const PlainUser user;
    result = Call("system parameter set", {{"name", "vm.swappiness"}, {"value", "1"}});
  }
  EXPECT_THAT(
      result.GetErrors(),
      ElementsAre(AnyOf(std::string("You do not have permission to change "
                                    "the parameter 'vm.swappiness'; usually only root may, "
                                    "and some are read-only"),
                        std::string("The parameter 'vm.swappiness' "
                                    "cannot be changed from here: Read-only file system"))));
  EXPECT_EQ(WitnessLine("sysctl -n vm.swappiness"), value);
}

TEST(SystemParameterSetTest, NeedsNameAndValue) {
  EXPECT_THAT(
      Call("system parameter set").GetErrors(),
      ElementsAre("Missing required parameter --name", "Missing required parameter --value"));
}

// Users.

TEST(SystemAccountListTest, AgreesWithGetent) {
  std::vector<std::string> expected =
      WitnessLines("getent passwd | sed 's/,[^:]*//' | cut -d: -f1,3-");
  std::vector<std::string> found;
  for (const Structure& structure : Call("system account list").GetStructs()) {
    const std::string shown = TextOf(structure, "Full Name");
    const std::string fullName = shown == "none" ? "" : shown;
    found.push_back(TextOf(structure, "Name") + ":" + TextOf(structure, "User Id") + ":" +
                    TextOf(structure, "Group Id") + ":" + fullName + ":" +
                    TextOf(structure, "Home") + ":" + TextOf(structure, "Shell"));
    EXPECT_EQ(TextOf(structure, "Group"),
              WitnessLine("getent group " + TextOf(structure, "Group Id") + " | cut -d: -f1"));
  }
  EXPECT_EQ(found, expected);
}

TEST(SystemAccountListTest, Filters) {
  const auto names = [](const Parameters& parameters) {
    return FieldOf(Call("system account list", parameters).GetStructs(), "Name");
  };
  EXPECT_THAT(names({{"name", "root"}}), ElementsAre("root"));
  EXPECT_THAT(names({{"name", "nobody"}, {"n", "root"}}), ElementsAre("root", "nobody"));
  EXPECT_THAT(names({{"name", "no such"}}), IsEmpty());
  EXPECT_THAT(names({{"name", "ro*t"}, {"name", "*body"}}), ElementsAre("root", "nobody"));
  EXPECT_THAT(names({{"minimum-id", "65534"}}), AllOf(Contains("nobody"), Not(Contains("root"))));
  EXPECT_THAT(names({{"minimum-id", "4294967295"}}), IsEmpty());
  EXPECT_THAT(names({{"login", ""}}), Not(Contains("nobody")));
  EXPECT_THAT(FieldOf(Call("system account list", {{"l", ""}}).GetStructs(), "Login"),
              Each("true"));
  EXPECT_THAT(Call("system account list", {{"minimum-id", "4294967296"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'minimum-id'. Expected integer in "
                          "the range 0-4294967295"));
}

TEST(SystemAccountGroupsTest, AgreesWithId) {
  for (const std::string& name : WitnessLines("getent passwd | cut -d: -f1")) {
    const auto list = Call("system account groups", {{"name", name}}).GetList();
    std::string groups;
    for (const auto& group : list->GetObjects()) {
      groups += (groups.empty() ? "" : " ") + group->ToString();
    }
    EXPECT_EQ(groups, WitnessLine("id -Gn " + name)) << name;
  }
}

TEST(SystemAccountGroupsTest, ReportsAMissingAccount) {
  EXPECT_THAT(Call("system account groups", {{"name", "no such"}}).GetErrors(),
              ElementsAre("There is no account 'no such'"));
}

TEST(SystemSessionListTest, AgreesWithWho) {
  if (::access("/run/utmp", R_OK) != 0) {
    // Without login entries, the sessions are those of the login service.
    const auto expected = WitnessLines(
        "for s in /run/systemd/sessions/*; do [ ! -f $s ] || sed -n 's/^USER=//p' $s; done");
    EXPECT_THAT(FieldOf(Call("system session list").GetStructs(), "User"),
                ::testing::UnorderedElementsAreArray(expected));
    return;
  }
  std::vector<std::string> found;
  for (const Structure& structure : Call("system session list").GetStructs()) {
    found.push_back(TextOf(structure, "User") + " " + TextOf(structure, "Terminal"));
  }
  EXPECT_THAT(
      found, ::testing::UnorderedElementsAreArray(WitnessLines("who | awk '{print $1 \" \" $2}'")));
}

TEST(SystemSessionListTest, ListsNoSessionOfAnUnknownUser) {
  EXPECT_THAT(Call("system session list", {{"user", "no such"}}).GetStructs(), IsEmpty());
}

TEST(SystemModuleListTest, ListsWhatTheKernelLists) {
  const auto expected =
      WitnessLines("[ ! -e /proc/modules ] || cut -d' ' -f1 /proc/modules | LC_ALL=C sort");
  EXPECT_EQ(FieldOf(Call("system module list").GetStructs(), "Name"), expected);
  for (const Structure& structure : Call("system module list", {{"unused", ""}}).GetStructs()) {
    EXPECT_EQ(NumberOf(structure, "References"), 0);
  }
}

TEST(SystemModuleCheckTest, FindsModulesInSysAndReportsUnknownOnes) {
  const auto check = [](const std::string& name) {
    return Call("system module check", {{"name", name}}).output->GetRootObject()->ToString();
  };
  for (const std::string& name : WitnessLines("ls /sys/module | head -5")) {
    EXPECT_EQ(check(name), "true") << name;
  }
  EXPECT_THAT(Call("system module check", {{"name", "no-such-module"}}).GetErrors(),
              ElementsAre(AnyOf(std::string("There is no module 'no-such-module'"),
                                "Unable to tell whether the kernel has the module "
                                "'no-such-module': there is no folder /lib/modules/" +
                                    WitnessLine("uname -r"))));
  EXPECT_THAT(Call("system module check", {{"name", "../x"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'name'. Value does not match the "
                          "expected regular expression ([A-Za-z0-9_-]+)"));
}

}  // namespace
}  // namespace Kestrel::Testing

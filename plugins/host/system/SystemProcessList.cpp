// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/TextPattern.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/ClockText.h"
#include "plugins/host/system/Processes.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemFigures.h"

namespace Kestrel::Host {
namespace {

// More than any machine has, in KiB.
constexpr std::int64_t kMostMemory = std::int64_t(1) << 50;
constexpr std::int64_t kMostProcesses = 1 << 22;

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("Process")
          .Number("Id", "The number of the process.")
          .Number("Parent", "The number of the process that it belongs to; 0 for none.")
          .Text("User", "By whose rights it acts: a name, or a number without an account.")
          .Text("State", "What it is doing: running, sleeping, waiting, ...")
          .Number("Threads", "How many threads it has.")
          .Number("Nice", "How much it gives way to others, from -20 to 19.")
          .Number("Virtual", "The memory that it may address, in KiB.")
          .Number("Resident", "The memory that it holds, in KiB.")
          .Text("Time", "The processor time that it took: days-hours:minutes:seconds.")
          .Number("Seconds", "The same in seconds.")
          .Text("Started", "When it started, in the time zone of the machine.")
          .Text("Terminal", "Its terminal below /dev; empty for none.")
          .Truth("Kernel", "Whether it is a thread of the kernel itself.")
          .Text("Name", "The name of its program, cut by the kernel after 15 bytes.")
          .Text("Command", "Its arguments with blanks between them, or its name in brackets.");
  return shape;
}

// What a process must be to be listed; an empty set lets every process pass.
struct Filter {
  std::set<std::int64_t> ids;
  std::set<std::string> users;
  std::set<std::string> states;
  std::unique_ptr<TextPattern> pattern;
  bool isWholeCommand = false;
  bool isKernelListed = true;
  std::int64_t minimumMemory = 0;
};

std::set<std::string> TextsOf(const CallSpec::Input& input, const char* name) {
  std::vector<std::string> texts;
  input.GetParameterList(name, texts);
  return {texts.begin(), texts.end()};
}

Filter MakeFilter(const CallSpec::Input& input) {
  Filter filter;
  std::vector<std::int64_t> ids;
  input.GetParameterIntList("id", ids);
  filter.ids.insert(ids.begin(), ids.end());
  filter.users = TextsOf(input, "user");
  filter.states = TextsOf(input, "state");
  if (input.HasParameter("name")) {
    filter.pattern = std::make_unique<TextPattern>(input.GetParameter("name"));
  }
  filter.isWholeCommand = input.IsFlagSet("full");
  filter.isKernelListed =
      !input.HasParameter("kernel-threads") || input.GetParameterBool("kernel-threads");
  if (input.HasParameter("min-memory")) {
    filter.minimumMemory = input.GetParameterInt("min-memory");
  }
  return filter;
}

template <typename Value>
bool Passes(const std::set<Value>& wanted, const Value& value) {
  return wanted.empty() || wanted.count(value) > 0;
}

bool PassesUser(const Filter& filter, const Process& process, UserNames& users) {
  return Passes(filter.users, users.Get(process.user)) ||
         filter.users.count(std::to_string(process.user)) > 0;
}

bool PassesPattern(const Filter& filter, const Process& process) {
  if (filter.pattern == nullptr) {
    return true;
  }
  const bool isCommand = filter.isWholeCommand && !process.command.empty();
  return filter.pattern->IsIn(isCommand ? process.command : process.name);
}

bool PassesAll(const Filter& filter, const Process& process, UserNames& users) {
  return Passes(filter.ids, std::int64_t(process.id)) && PassesUser(filter, process, users) &&
         Passes(filter.states, std::string(StateWord(process.state))) &&
         (filter.isKernelListed || !process.isKernelThread) &&
         process.residentMemory >= filter.minimumMemory && PassesPattern(filter, process);
}

void Sort(std::vector<Process>& processes, const std::string& order) {
  const auto sortBy = [&processes](auto isBefore) {
    std::stable_sort(processes.begin(), processes.end(), isBefore);
  };
  if (order == "memory") {
    sortBy([](const Process& a, const Process& b) { return a.residentMemory > b.residentMemory; });
  } else if (order == "time") {
    sortBy([](const Process& a, const Process& b) { return a.processorTicks > b.processorTicks; });
  } else if (order == "name") {
    sortBy([](const Process& a, const Process& b) { return a.name < b.name; });
  }
}

// Turns processes into records, with what all of them have in common.
class ProcessRecords {
 public:
  ProcessRecords() : tick_(::sysconf(_SC_CLK_TCK)), machineStart_(ReadStartMoment(kProc)) {}

  std::shared_ptr<MetaObj::MetaStruct> Make(const Process& process) {
    const long seconds = process.processorTicks / tick_;
    auto record = Shape().NewRecord();
    record->SetField("Id", process.id);
    record->SetField("Parent", process.parentId);
    record->SetField("User", OutsideText(users_.Get(process.user)));
    record->SetField("State", StateWord(process.state));
    record->SetField("Threads", process.threads);
    record->SetField("Nice", process.nice);
    record->SetField("Virtual", process.virtualMemory);
    record->SetField("Resident", process.residentMemory);
    record->SetField("Time", SpanText(seconds));
    record->SetField("Seconds", seconds);
    record->SetField("Started", MomentText(machineStart_ + process.startTicks / tick_));
    record->SetField("Terminal", OutsideText(TerminalName(process.terminal, kSys)));
    record->SetField("Kernel", process.isKernelThread);
    record->SetField("Name", OutsideText(process.name));
    record->SetField("Command", OutsideText(process.command.empty() ? "[" + process.name + "]"
                                                                    : process.command));
    return record;
  }

  UserNames& GetUsers() { return users_; }

 private:
  long tick_;
  long machineStart_;
  UserNames users_;
};

class SystemProcessList final : public HostCommand {
 public:
  SystemProcessList() : HostCommand("List the processes.") {
    // The whole command line would fill many lines of a screen; it is there when asked for.
    ShowAsTable("Process", "Id,Parent,User,State,Resident,Time,Name",
                {{"units:Process.Resident", "KiB"}});
    AddExample("", "List all processes");
    AddExample("--user=root --kernel-threads=false", "List the programs that root runs");
    AddExample("--state=running --state=waiting", "List the processes that are busy");
    AddExample("--min-memory=102400 --sort=memory", "List the largest processes first");
    AddExample("--name=\"^(sh|bash)$\"", "List the shells");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    DeclareFilters(spec);
    Parameter("sort", CallSpec::String, "The order of the list: %FULLENUM%")
        .Short("o")
        .OneOf({{"id", "by number, which is the order without this parameter"},
                {"memory", "the largest resident memory first"},
                {"name", "by name"},
                {"time", "the longest processor time first"}})
        .AddTo(spec);
  }

  static void DeclareFilters(CallSpec::InputSpec& spec) {
    Parameter("id", CallSpec::IntList, "List only processes with one of these numbers.")
        .Short("i")
        .Between(1, kMostProcesses)
        .AddTo(spec);
    Parameter("user", CallSpec::StringList,
              "List only processes of one of these users, each a name or a number.")
        .Short("u")
        .AddTo(spec);
    Parameter("name", CallSpec::String,
              "List only processes with this regular expression in their names.")
        .Short("n")
        .AddTo(spec);
    Parameter("full", CallSpec::Flag, "Look for the expression in the whole command line.")
        .Short("f")
        .AddTo(spec);
    Parameter("state", CallSpec::StringList,
              "List only processes in one of these states: %FULLENUM%")
        .Short("s")
        .OneOf({{"running", "runs or waits for a processor"},
                {"sleeping", "waits for something to happen"},
                {"waiting", "waits for a device and cannot be disturbed"},
                {"stopped", "was stopped, as by Ctrl-Z"},
                {"traced", "is halted by a debugger"},
                {"zombie", "has ended, and its parent has not asked how"},
                {"idle", "is a thread of the kernel without work"}})
        .AddTo(spec);
    Parameter("min-memory", CallSpec::Int,
              "List only processes that hold at least this many KiB of memory.")
        .Short("m")
        .Between(0, kMostMemory)
        .AddTo(spec);
    Parameter("kernel-threads", CallSpec::Bool,
              "Whether to list the threads of the kernel too; true without this parameter.")
        .Short("k")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The processes at this moment.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const Filter filter = MakeFilter(input);
    ProcessRecords records;
    auto processes = ReadProcesses(kProc);
    Sort(processes, input.GetParameter("sort"));
    const auto list = Shape().NewList();
    for (const Process& process : processes) {
      if (PassesAll(filter, process, records.GetUsers())) {
        list->Add(records.Make(process));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemProcessList() {
  return std::make_shared<SystemProcessList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <unistd.h>

#include <memory>
#include <string>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/Regex.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/frame/TimeFormat.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/Processes.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemStatistics.h"

namespace Kestrel::Host {
namespace {

// In KiB; more than any machine has.
constexpr std::int64_t kMaxMemory = std::int64_t(1) << 50;
constexpr std::int64_t kMaxProcessId = 1 << 22;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Process")
          .Int("Id", "The number of the process.")
          .Int("Parent", "The number of its parent process; 0 for none.")
          .String("User", "The effective user: a name, or a number if there is no account.")
          .String("State", "Its state: running, sleeping, waiting and others.")
          .Int("Threads", "How many threads it has.")
          .Int("Nice", "Its nice value, from -20 to 19.")
          .Int("Virtual", "Its virtual memory, in KiB.")
          .Int("Resident", "Its resident memory, in KiB.")
          .String("Time", "The processor time that it has used: days-hours:minutes:seconds.")
          .Int("Seconds", "The same in seconds.")
          .String("Started", "When it started, in the time zone of the machine.")
          .String("Terminal", "Its terminal below /dev; empty for none.")
          .Bool("Kernel", "Whether it is a kernel thread.")
          .String("Name", "The name of its program, at most 15 bytes.")
          .String("Command", "Its arguments, separated by spaces, or its name in brackets.");
  return shape;
}

// Decides which processes are listed.
class ProcessFilter {
 public:
  explicit ProcessFilter(const CallSpec::Input& input)
      : ids_(input, "id"), users_(input, "user"), states_(input, "state") {
    if (input.HasParameter("name")) {
      regex_ = std::make_unique<Regex>(input.GetParameter("name"));
    }
    isWholeCommand_ = input.IsFlagSet("full");
    isKernelListed_ =
        !input.HasParameter("kernel-threads") || input.GetParameterBool("kernel-threads");
    minimumMemory_ = input.HasParameter("min-memory") ? input.GetParameterInt("min-memory") : 0;
  }

  bool Accepts(const Process& process, const std::string& userName) const {
    return ids_.Accepts(process.id) &&
           users_.AcceptsAnyOf({userName, std::to_string(process.user)}) &&
           states_.Accepts(StateName(process.state)) &&
           (isKernelListed_ || !process.isKernelThread) &&
           process.residentMemory >= minimumMemory_ && AcceptsName(process);
  }

 private:
  bool AcceptsName(const Process& process) const {
    if (regex_ == nullptr) {
      return true;
    }
    const bool isCommand = isWholeCommand_ && !process.command.empty();
    return regex_->IsFoundIn(isCommand ? process.command : process.name);
  }

  IntFilter ids_;
  StringFilter users_;
  StringFilter states_;
  std::unique_ptr<Regex> regex_;
  bool isWholeCommand_ = false;
  bool isKernelListed_ = true;
  std::int64_t minimumMemory_ = 0;
};

// Converts processes to structures, with the data that they share.
class ProcessStructs {
 public:
  ProcessStructs() : tick_(::sysconf(_SC_CLK_TCK)), machineStart_(ReadStartTime(kProc)) {}

  std::shared_ptr<MetaObj::MetaStruct> Make(const Process& process) {
    const long seconds = process.processorTicks / tick_;
    auto result = Shape().NewStruct();
    result->SetField("Id", process.id);
    result->SetField("Parent", process.parentId);
    result->SetField("User", SanitizedText(users_.Get(process.user)));
    result->SetField("State", StateName(process.state));
    result->SetField("Threads", process.threads);
    result->SetField("Nice", process.nice);
    result->SetField("Virtual", process.virtualMemory);
    result->SetField("Resident", process.residentMemory);
    result->SetField("Time", FormatDuration(seconds));
    result->SetField("Seconds", seconds);
    result->SetField("Started",
                     FormatTimestamp(ClampedSum(machineStart_, process.startTicks / tick_)));
    result->SetField("Terminal", SanitizedText(TerminalName(process.terminal, kSys)));
    result->SetField("Kernel", process.isKernelThread);
    result->SetField("Name", SanitizedText(process.name));
    result->SetField("Command", SanitizedText(process.command.empty() ? "[" + process.name + "]"
                                                                      : process.command));
    return result;
  }

  const std::string& GetUserName(const Process& process) { return users_.Get(process.user); }

 private:
  long tick_;
  long machineStart_;
  UserNames users_;
};

class SystemProcessList final : public ListCommand {
 public:
  SystemProcessList() : ListCommand("List the processes.", Shape, "The processes.") {
    // Without the command line, which is often longer than the screen is wide.
    ShowColumns("Id,Parent,User,State,Resident,Time,Name", {{"units:Process.Resident", "KiB"}});
    AddExample("", "List all processes");
    AddExample("--user=root --kernel-threads=false", "List the programs that root runs");
    AddExample("--state=running --state=waiting", "List the processes that are busy");
    AddExample("--min-memory=102400 --sort=Resident --descending",
               "List the largest processes first");
    AddExample("--name=\"^(sh|bash)$\"", "List the shells");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("id", CallSpec::IntList, "List only processes with one of these numbers.")
        .Short("i")
        .Between(1, kMaxProcessId)
        .AddTo(spec);
    Parameter("user", CallSpec::StringList,
              "List only processes of one of these users, each a name or a number.")
        .Short("u")
        .AddTo(spec);
    Parameter("name", CallSpec::String,
              "List only processes whose names match this regular expression.")
        .Short("n")
        .AddTo(spec);
    Parameter("full", CallSpec::Flag, "Match the expression with the whole command line.")
        .Short("f")
        .AddTo(spec);
    Parameter("state", CallSpec::StringList,
              "List only processes in one of these states: %FULLENUM%")
        .Short("s")
        .OneOf({{"running", "runs or waits for a processor"},
                {"sleeping", "waits for an event"},
                {"waiting", "waits for a device and cannot be interrupted"},
                {"stopped", "was stopped, for example by Ctrl-Z"},
                {"traced", "is stopped by a debugger"},
                {"zombie", "has ended, but its parent has not collected its status"},
                {"idle", "is a kernel thread without work"}})
        .AddTo(spec);
    Parameter("min-memory", CallSpec::Int,
              "List only processes with at least this resident memory in KiB.")
        .Short("m")
        .Between(0, kMaxMemory)
        .AddTo(spec);
    Parameter("kernel-threads", CallSpec::Bool,
              "Whether to list kernel threads; the default is true.")
        .Short("k")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const ProcessFilter filter(input);
    ProcessStructs structs;
    for (const Process& process : ReadProcesses(kProc)) {
      if (filter.Accepts(process, structs.GetUserName(process))) {
        rows.Add(structs.Make(process));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemProcessList() {
  return std::make_shared<SystemProcessList>();
}

}  // namespace Kestrel::Host

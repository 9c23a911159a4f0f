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

// More than any machine has, in KiB.
constexpr std::int64_t kMaxMemory = std::int64_t(1) << 50;
constexpr std::int64_t kMaxProcessId = 1 << 22;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Process")
          .Int("Id", "The number of the process.")
          .Int("Parent", "The number of the process that it belongs to; 0 for none.")
          .String("User", "By whose rights it acts: a name, or a number without an account.")
          .String("State", "What it is doing: running, sleeping, waiting, ...")
          .Int("Threads", "How many threads it has.")
          .Int("Nice", "How much it gives way to others, from -20 to 19.")
          .Int("Virtual", "The memory that it may address, in KiB.")
          .Int("Resident", "The memory that it holds, in KiB.")
          .String("Time", "The processor time that it took: days-hours:minutes:seconds.")
          .Int("Seconds", "The same in seconds.")
          .String("Started", "When it started, in the time zone of the machine.")
          .String("Terminal", "Its terminal below /dev; empty for none.")
          .Bool("Kernel", "Whether it is a thread of the kernel itself.")
          .String("Name", "The name of its program, cut by the kernel after 15 bytes.")
          .String("Command", "Its arguments with blanks between them, or its name in brackets.");
  return shape;
}

// Which processes the user asked for.
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

// Turns processes into structs, with what all of them have in common.
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
  SystemProcessList() : ListCommand("List the processes.", Shape, "The processes at this moment.") {
    // The whole command line would fill many lines of a screen; it is there when asked for.
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
        .Between(0, kMaxMemory)
        .AddTo(spec);
    Parameter("kernel-threads", CallSpec::Bool,
              "Whether to list the threads of the kernel too; true without this parameter.")
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

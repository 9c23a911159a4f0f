// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
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

// In bytes; more than any machine has.
constexpr std::int64_t kMaxMemory = std::int64_t(1) << 60;
constexpr long kHundredthsPerSecond = 100;

constexpr char kStateForms[] =
    "running, sleeping, waiting, stopped, traced, zombie, idle, parked, dead, or the letter that "
    "ps prints";
constexpr char kHiddenText[] =
    "The kernel hides the processes of other users from you; list your own with --user";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Process")
          .Int("Id", "The number of the process.")
          .Int("Parent", "The number of its parent process; 0 for none.")
          .String("User", "The effective user: a name, or a number if there is no account.")
          .String("State", "Its state: running, sleeping, waiting and others.")
          .Int("Threads", "How many threads it has.")
          .Int("Nice", "Its nice value, from -20 to 19.")
          .Share("CPU",
                 "The processor time that it has used, as a share of the time since it started; "
                 "100.00 % is one processor.")
          .Size("Virtual", "Its virtual memory.")
          .Size("Resident", "Its resident memory.")
          .String("Time", "The processor time that it has used: days-hours:minutes:seconds.")
          .Int("Seconds", "That time in seconds.")
          .SortedBy("Time", "Seconds")
          .String("Started", "When it started, in the time zone of the machine.")
          .String("Terminal", "Its terminal below /dev, or \"none\".")
          .Bool("Kernel", "Whether it is a kernel thread.")
          .String("Name",
                  "The name of its program, at most 15 bytes; kernel threads may have longer ones.")
          .String("Command", "Its arguments, separated by spaces, or its name in brackets.");
  return shape;
}

// Selects the processes to list.
class ProcessFilter {
 public:
  // Adds a message to `output` for each invalid value.
  ProcessFilter(const CallSpec::Input& input, CallSpec::Output& output)
      : ids_(input, "id"), users_(input, "user"), names_(input, "name") {
    ReadStates(input, output);
    if (input.HasParameter("match")) {
      ReadMatch(input.GetParameter("match"), output);
    }
    isWholeCommand_ = input.IsFlagSet("full");
    isKernelListed_ =
        !input.HasParameter("kernel-threads") || input.GetParameterBool("kernel-threads");
    minimumMemory_ =
        input.HasParameter("minimum-memory") ? input.GetParameterInt("minimum-memory") : 0;
  }

  bool Accepts(const Process& process, const std::string& userName) const {
    return ids_.Accepts(process.id) &&
           users_.AcceptsAnyOf({userName, std::to_string(process.user)}) &&
           (states_.empty() || states_.find(process.state) != std::string::npos) &&
           (isKernelListed_ || !process.isKernelThread) &&
           process.residentMemory >= minimumMemory_ && names_.Accepts(process.name) &&
           IsMatch(process);
  }

  // Whether the processes of all other users are excluded.
  bool IsOnlyOf(uid_t user, const std::string& name) const {
    return users_.IsGiven() && users_.AreAllIn({name, std::to_string(user)});
  }

 private:
  void ReadStates(const CallSpec::Input& input, CallSpec::Output& output) {
    std::vector<std::string> texts;
    input.GetParameterList("state", texts);
    for (const std::string& text : texts) {
      const auto state = ParseState(text);
      if (state) {
        states_ += *state;
      } else {
        output.AddErrorMessage("There is no such state: '" + text + "'; --state is " + kStateForms);
      }
    }
  }

  void ReadMatch(const std::string& text, CallSpec::Output& output) {
    try {
      match_ = std::make_unique<Regex>(text);
    } catch (const KestrelException& error) {
      output.AddErrorMessage(error.what());
    }
  }

  bool IsMatch(const Process& process) const {
    if (match_ == nullptr) {
      return true;
    }
    const bool isCommand = isWholeCommand_ && !process.command.empty();
    return match_->IsFoundIn(isCommand ? process.command : process.name);
  }

  IntFilter ids_;
  StringFilter users_;
  NameFilter names_;
  std::string states_;  // the letters of the states
  std::unique_ptr<Regex> match_;
  bool isWholeCommand_ = false;
  bool isKernelListed_ = true;
  std::int64_t minimumMemory_ = 0;
};

// Converts processes to structures. Contains the data that all conversions need.
class ProcessStructs {
 public:
  ProcessStructs()
      : tick_(::sysconf(_SC_CLK_TCK)),
        machineStart_(ReadStartTime(kProc)),
        upTicks_(ClampedProduct(ReadUptime(kProc).hundredths, tick_) / kHundredthsPerSecond) {}

  std::shared_ptr<MetaObj::MetaStruct> Make(const Process& process) {
    auto result = Shape().NewStruct();
    result->SetField("Id", process.id);
    result->SetField("Parent", process.parentId);
    result->SetField("User", SanitizedText(users_.Get(process.user)));
    result->SetField("State", StateName(process.state));
    result->SetField("Threads", process.threads);
    result->SetField("Nice", process.nice);
    SetSize(*result, "Virtual", process.virtualMemory);
    SetSize(*result, "Resident", process.residentMemory);
    SetTimes(*result, process);
    result->SetField("Terminal", SanitizedText(TerminalName(process.terminal, kSys)));
    result->SetField("Kernel", process.isKernelThread);
    result->SetField("Name", SanitizedText(process.name));
    result->SetField("Command", SanitizedText(process.command.empty() ? "[" + process.name + "]"
                                                                      : process.command));
    return result;
  }

  const std::string& GetUserName(uid_t user) { return users_.Get(user); }

 private:
  void SetTimes(MetaObj::MetaStruct& result, const Process& process) const {
    const long seconds = process.processorTicks / tick_;
    const long share =
        ProcessorShare(process.processorTicks, ClampedDifference(upTicks_, process.startTicks));
    SetShare(result, "CPU", share);
    result.SetField("Time", FormatDuration(seconds));
    result.SetField("Seconds", seconds);
    result.SetField("Started",
                    FormatTimestamp(ClampedSum(machineStart_, process.startTicks / tick_)));
  }

  long tick_;
  long machineStart_;
  long upTicks_;
  UserNames users_;
};

class SystemProcessList final : public ListCommand {
 public:
  SystemProcessList() : ListCommand("List the processes.", Shape, "The processes.") {
    // Leaves room for users such as systemd-timesync and for the long names of kernel threads.
    // Omits command lines, which are often wider than the screen.
    ShowColumns("Id,User,CPU,Resident Bytes,Name", {{"wrap-last", "true"}});
    AddMetaData("complete:id", "system.process.list Id");
    AddMetaData("complete:name", "system.process.list Name");
    AddMetaData("complete:user", "system.account.list Name");
    AddExample("", "List all processes");
    AddExample("--user=root --kernel-threads=false", "List the programs that root runs");
    AddExample("--state=running --state=waiting", "List the processes that are busy");
    AddExample("--minimum-memory=104857600 --sort=Resident --descending --human",
               "List the largest processes first");
    AddExample("--name=sh --name=\"*bash\"", "List the shells");
    AddExample("--match=/usr/bin/ --full --sort=Started", "List the programs of a folder by age");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    DeclareIdentity(spec);
    Parameter("match", CallSpec::String,
              "List only processes whose names contain a match of this regular expression.")
        .Short("m")
        .AddTo(spec);
    Parameter("full", CallSpec::Flag, "Match the expression with the whole command line.")
        .Short("f")
        .AddTo(spec);
    Parameter("state", CallSpec::StringList,
              "List only processes in one of these states: running, sleeping, waiting (for a "
              "device), stopped, traced, zombie, idle, or the letter that ps prints.")
        .Short("s")
        .AddTo(spec);
    Parameter("minimum-memory", CallSpec::Int,
              "List only processes with at least this resident memory in bytes.")
        .Short("r")
        .Between(0, kMaxMemory)
        .AddTo(spec);
    Parameter("kernel-threads", CallSpec::Bool,
              "Whether to list kernel threads; the default is true.")
        .Short("k")
        .AddTo(spec);
  }

  static void DeclareIdentity(CallSpec::InputSpec& spec) {
    Parameter("id", CallSpec::IntList, "List only processes with one of these numbers.")
        .Short("i")
        .Between(1, kMaxProcessId)
        .AddTo(spec);
    Parameter("user", CallSpec::StringList,
              "List only processes of one of these users, each a name or a number.")
        .Short("u")
        .AddTo(spec);
    Parameter("name", CallSpec::StringList,
              "List only processes with one of these names; * in a name stands for any text.")
        .Short("n")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const ProcessFilter filter(input, output);
    if (output.HasError()) {
      return;
    }
    ProcessStructs structs;
    if (HidesProcesses(kProc) && !filter.IsOnlyOf(::geteuid(), structs.GetUserName(::geteuid()))) {
      output.AddErrorMessage(kHiddenText);
      return;
    }
    for (const Process& process : ReadProcesses(kProc)) {
      if (filter.Accepts(process, structs.GetUserName(process.user))) {
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

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/Processes.h"
#include "plugins/host/system/Signals.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

constexpr char kDefaultSignal[] = "TERM";
constexpr long kFirstProcess = 1;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SignalledProcess")
          .Int("Id", "The number of the process.")
          .String("User", "Its effective user: a name, or a number if there is no account.")
          .String("Signal", "The name of the signal, without SIG.")
          .Int("Signal Number", "The number of the signal.")
          .String("Outcome",
                  "\"sent\", or \"had ended\" if the process ended before the signal was sent.")
          .String("Name",
                  "The name of its program, at most 15 bytes; kernel threads may have longer ones.")
          .String("Command", "Its arguments, separated by spaces, or its name in brackets.");
  return shape;
}

// A process to signal. `process` describes it as it was before the signal.
struct Candidate {
  Process process;
  SignalTarget target;
};

std::string Describe(const Process& process) {
  return "process " + std::to_string(process.id) + " (" + SanitizedText(process.name)->ToString() +
         ")";
}

std::optional<Candidate> FindCandidate(long id) {
  auto target = SignalTarget::Open(id);
  auto process = target ? ReadProcess(kProc, id) : std::nullopt;
  if (!process) {
    return std::nullopt;
  }
  return Candidate{std::move(*process), std::move(*target)};
}

// The processes selected by the user. Each reason not to signal one of them becomes an error
// message, and none of them is signalled then.
class Selection {
 public:
  Selection(const CallSpec::Input& input, CallSpec::Output& output)
      : output_(output), users_(input, "user"), isForced_(input.IsFlagSet("force")) {
    std::vector<long> ids;
    std::vector<std::string> names;
    input.GetParameterIntList("id", ids);
    input.GetParameterList("name", names);
    if (ids.empty() == names.empty()) {
      output_.AddErrorMessage("Say which processes to signal: either --id or --name");
      return;
    }
    for (const long id : ids) {
      AddById(id);
    }
    AddByNames(names);
    for (const Candidate& candidate : candidates_) {
      Check(candidate);
    }
  }

  const std::vector<Candidate>& Get() const { return candidates_; }

 private:
  void AddById(long id) {
    auto candidate = FindCandidate(id);
    if (!candidate) {
      output_.AddErrorMessage("There is no process " + std::to_string(id));
    } else if (!IsOfUser(candidate->process)) {
      output_.AddErrorMessage("The user of " + Describe(candidate->process) + " is " +
                              userNames_.Get(candidate->process.user));
    } else {
      Add(std::move(*candidate));
    }
  }

  void AddByNames(const std::vector<std::string>& names) {
    if (names.empty()) {
      return;
    }
    const auto processes = ReadProcesses(kProc);
    for (const std::string& name : names) {
      bool isFound = false;
      for (const Process& process : processes) {
        isFound = AddIfNamed(process, name) || isFound;
      }
      if (!isFound) {
        output_.AddErrorMessage("There is no process '" + name + "'" +
                                (users_.IsGiven() ? " of that user" : ""));
      }
    }
  }

  // A name never selects this process, so that the user sees the result.
  bool AddIfNamed(const Process& process, const std::string& name) {
    if (process.name != name || !IsOfUser(process) || process.id == ::getpid()) {
      return false;
    }
    auto candidate = FindCandidate(process.id);
    if (!candidate || candidate->process.name != name) {
      return false;
    }
    Add(std::move(*candidate));
    return true;
  }

  void Add(Candidate&& candidate) {
    for (const Candidate& known : candidates_) {
      if (known.process.id == candidate.process.id) {
        return;
      }
    }
    candidates_.push_back(std::move(candidate));
  }

  bool IsOfUser(const Process& process) {
    return users_.AcceptsAnyOf({userNames_.Get(process.user), std::to_string(process.user)});
  }

  void Check(const Candidate& candidate) {
    const Process& process = candidate.process;
    if (!isForced_ && process.id == kFirstProcess) {
      output_.AddErrorMessage("All other processes depend on " + Describe(process) +
                              "; --force signals it");
    } else if (!isForced_ && process.id == ::getpid()) {
      output_.AddErrorMessage("This program is " + Describe(process) + "; --force signals it");
    } else if (candidate.target.Send(0) == EPERM) {
      output_.AddErrorMessage("You do not have permission to signal " + Describe(process) + " of " +
                              userNames_.Get(process.user));
    }
  }

  CallSpec::Output& output_;
  StringFilter users_;
  UserNames userNames_;
  bool isForced_;
  std::vector<Candidate> candidates_;
};

class SystemProcessSignal final : public HostCommand {
 public:
  SystemProcessSignal() : HostCommand("Send a signal to processes, for example to end them.") {
    ShowAsTable("Id,User,Signal,Outcome,Name", {{"wrap-last", "true"}});
    AddMetaData("changes", "true");
    AddMetaData("complete:id", "system.process.list Id");
    AddMetaData("complete:name", "system.process.list Name");
    AddMetaData("complete:user", "system.account.list Name");
    AddExample("--id=4711", "Ask a process to end");
    AddExample("--name=sshd --signal=HUP", "Make a service read its settings again");
    AddExample("--name=sleep --user=anna --signal=9", "End programs of a user at once");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("id", CallSpec::IntList, "The numbers of the processes.")
        .Short("i")
        .Between(1, kMaxProcessId)
        .AddTo(spec);
    Parameter("name", CallSpec::StringList,
              "The exact names of the processes, as system process list shows them.")
        .Short("n")
        .AddTo(spec);
    Parameter("user", CallSpec::StringList,
              "Signal only processes of one of these users, each a name or a number.")
        .Short("u")
        .AddTo(spec);
    Parameter("signal", CallSpec::String,
              "The signal, by name or number, such as HUP, sigterm or 9; the default is TERM.")
        .Short("s")
        .AddTo(spec);
    Parameter("force", CallSpec::Flag,
              "Signal even process 1, on which all others depend, and this program.")
        .Short("f")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The processes that were signalled.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::string text =
        input.HasParameter("signal") ? input.GetParameter("signal") : kDefaultSignal;
    const auto signal = ParseSignal(text);
    if (!signal) {
      output.AddErrorMessage("There is no such signal: '" + text +
                             "'; --signal is a name such as "
                             "TERM or a number from 1 to " +
                             std::to_string(SIGRTMAX));
      return;
    }
    const Selection selection(input, output);
    if (!output.HasError()) {
      Send(selection.Get(), *signal, output);
    }
  }

  static void Send(const std::vector<Candidate>& candidates, int signal, CallSpec::Output& output) {
    UserNames users;
    const auto rows = Shape().NewList();
    for (const Candidate& candidate : candidates) {
      const int error = candidate.target.Send(signal);
      if (error != 0 && error != ESRCH) {
        output.AddErrorMessage("Unable to signal " + Describe(candidate.process) + ": " +
                               std::strerror(error));
        continue;
      }
      const Process& process = candidate.process;
      const auto row = Shape().NewStruct();
      row->SetField("Id", process.id);
      row->SetField("User", SanitizedText(users.Get(process.user)));
      row->SetField("Signal", SignalName(signal));
      row->SetField("Signal Number", static_cast<long>(signal));
      row->SetField("Outcome", error == 0 ? "sent" : "had ended");
      row->SetField("Name", SanitizedText(process.name));
      row->SetField("Command", SanitizedText(process.command.empty() ? "[" + process.name + "]"
                                                                     : process.command));
      rows->Add(row);
    }
    output.SetRootObject(rows);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemProcessSignal() {
  return std::make_shared<SystemProcessSignal>();
}

}  // namespace Kestrel::Host

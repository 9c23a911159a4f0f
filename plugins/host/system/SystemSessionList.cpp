// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/ClockText.h"
#include "plugins/host/system/Sessions.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("Session")
          .Text("User", "Who is logged in.")
          .Text("Terminal", "The terminal below /dev; empty for a session without one.")
          .Text("Host", "From where; empty for the machine itself.")
          .Text("Started", "Since when, in the time zone of the machine.")
          .Number("Process", "The number of the process that leads the session.");
  return shape;
}

class SystemSessionList final : public HostCommand {
 public:
  SystemSessionList() : HostCommand("List who is logged in.") {
    ShowAsTable("Session", "User,Terminal,Started,Process,Host");
    AddExample("", "List who is logged in");
    AddExample("--user=root", "List the sessions of root");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("user", CallSpec::StringList, "List only sessions of one of these users.")
        .Short("u")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The sessions of people, the oldest first.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    std::vector<std::string> users;
    input.GetParameterList("user", users);
    const auto list = Shape().NewList();
    for (const Session& session : ReadSessions()) {
      if (!users.empty() && std::count(users.begin(), users.end(), session.user) == 0) {
        continue;
      }
      auto record = Shape().NewRecord();
      record->SetField("User", OutsideText(session.user));
      record->SetField("Terminal", OutsideText(session.terminal));
      record->SetField("Host", OutsideText(session.host));
      record->SetField("Started", MomentText(session.start));
      record->SetField("Process", session.process);
      list->Add(record);
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemSessionList() {
  return std::make_shared<SystemSessionList>();
}

}  // namespace Kestrel::Host

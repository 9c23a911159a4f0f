// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TimeFormat.h"
#include "plugins/host/system/Sessions.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Session")
          .String("User", "The user who is logged in.")
          .String("Terminal", "The terminal below /dev; \"none\" for a session without one.")
          .String("Host", "The remote host; \"local\" for a local session.")
          .String("Started", "When it started, in the time zone of the machine.")
          .Int("Process", "The number of the process that leads the session.");
  return shape;
}

class SystemSessionList final : public ListCommand {
 public:
  SystemSessionList()
      : ListCommand("List who is logged in.", Shape, "The login sessions, the oldest first.") {
    ShowColumns("User,Terminal,Started,Process,Host", {{"wrap-last", "true"}});
    AddMetaData("complete:user", "system.account.list Name");
    AddExample("", "List who is logged in");
    AddExample("--user=root", "List the sessions of root");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("user", CallSpec::StringList,
              "List only sessions of one of these users; * in a name stands for any text.")
        .Short("u")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter users(input, "user");
    for (const Session& session : ReadSessions("")) {
      if (!users.Accepts(session.user)) {
        continue;
      }
      auto row = Shape().NewStruct();
      row->SetField("User", SanitizedText(session.user));
      row->SetField("Terminal",
                    SanitizedText(session.terminal.empty() ? "none" : session.terminal));
      row->SetField("Host", SanitizedText(session.host.empty() ? "local" : session.host));
      row->SetField("Started", FormatTimestamp(session.start));
      row->SetField("Process", session.process);
      rows.Add(row);
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemSessionList() {
  return std::make_shared<SystemSessionList>();
}

}  // namespace Kestrel::Host

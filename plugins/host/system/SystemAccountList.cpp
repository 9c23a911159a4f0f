// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Account")
          .String("Name", "The name of the account.")
          .Int("User Id", "Its number.")
          .Int("Group Id", "The number of its primary group.")
          .String("Group", "The name of that group, or its number if it has no name.")
          .String("Full Name",
                  "The full name of the user or the purpose of the account; \"none\" without one.")
          .String("Home", "Its home folder; \"none\" without one.")
          .String("Shell", "The program that a login starts; /bin/sh if the entry names none.")
          .Bool("Login", "Whether that program allows a login.");
  return shape;
}

std::shared_ptr<MetaObj::MetaString> TextOrNone(const std::string& text) {
  return SanitizedText(text.empty() ? "none" : text);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Account& account, GroupNames& groups) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(account.name));
  result->SetField("User Id", static_cast<long>(account.id));
  result->SetField("Group Id", static_cast<long>(account.groupId));
  result->SetField("Group", SanitizedText(groups.Get(account.groupId)));
  result->SetField("Full Name", TextOrNone(account.fullName));
  result->SetField("Home", TextOrNone(account.home));
  result->SetField("Shell", SanitizedText(account.shell));
  result->SetField("Login", IsLoginShell(account.shell));
  return result;
}

class SystemAccountList final : public ListCommand {
 public:
  SystemAccountList()
      : ListCommand("List the accounts of users.", Shape,
                    "The accounts, in the order of the system.") {
    ShowColumns("Name,User Id,Group,Login,Shell,Home", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "system.account.list Name");
    AddExample("", "List all accounts");
    AddExample("--login --minimum-id=1000", "List the accounts of persons");
    AddExample("--name=\"systemd-*\"", "List the accounts of system services");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::StringList,
              "List only accounts with one of these names; * in a name stands for any text.")
        .Short("n")
        .AddTo(spec);
    Parameter("minimum-id", CallSpec::Int, "List only accounts with at least this number.")
        .Short("m")
        .Between(0, std::numeric_limits<uid_t>::max())
        .AddTo(spec);
    Parameter("login", CallSpec::Flag, "List only accounts that allow a login.")
        .Short("l")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter names(input, "name");
    const std::int64_t minimum =
        input.HasParameter("minimum-id") ? input.GetParameterInt("minimum-id") : 0;
    const bool isLoginOnly = input.IsFlagSet("login");
    GroupNames groups;
    for (const Account& account : ReadAccounts()) {
      if (names.Accepts(account.name) && account.id >= minimum &&
          (!isLoginOnly || IsLoginShell(account.shell))) {
        rows.Add(ToStruct(account, groups));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemAccountList() {
  return std::make_shared<SystemAccountList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <limits>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("Account")
          .Text("Name", "The name of the account.")
          .Number("User Id", "Its number.")
          .Number("Group Id", "The number of its own group.")
          .Text("Group", "The name of that group, or its number when it has none.")
          .Text("Full Name", "The name of the person or of the purpose; may be empty.")
          .Text("Home", "Its home folder.")
          .Text("Shell", "The program that a login starts.")
          .Truth("Login", "Whether that program lets a person in.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> MakeRecord(const Account& account) {
  auto record = Shape().NewRecord();
  record->SetField("Name", OutsideText(account.name));
  record->SetField("User Id", static_cast<long>(account.id));
  record->SetField("Group Id", static_cast<long>(account.groupId));
  record->SetField("Group", OutsideText(GroupName(account.groupId)));
  record->SetField("Full Name", OutsideText(account.fullName));
  record->SetField("Home", OutsideText(account.home));
  record->SetField("Shell", OutsideText(account.shell));
  record->SetField("Login", IsLoginShell(account.shell));
  return record;
}

class SystemAccountList final : public HostCommand {
 public:
  SystemAccountList() : HostCommand("List the accounts of users.") {
    ShowAsTable("Account", "Name,User Id,Group,Login,Shell,Home");
    AddExample("", "List all accounts");
    AddExample("--login --min-id=1000", "List the accounts of people");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::StringList, "List only accounts with one of these names.")
        .Short("n")
        .AddTo(spec);
    Parameter("min-id", CallSpec::Int, "List only accounts with this number or a greater one.")
        .Short("m")
        .Between(0, std::numeric_limits<uid_t>::max())
        .AddTo(spec);
    Parameter("login", CallSpec::Flag, "List only accounts that a person can log in to.")
        .Short("l")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The accounts that the machine knows, in its own order.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    std::vector<std::string> names;
    input.GetParameterList("name", names);
    const std::int64_t minimum = input.HasParameter("min-id") ? input.GetParameterInt("min-id") : 0;
    const bool isLoginOnly = input.IsFlagSet("login");
    const auto list = Shape().NewList();
    for (const Account& account : ReadAccounts()) {
      const bool isWanted =
          (names.empty() || std::count(names.begin(), names.end(), account.name) > 0) &&
          account.id >= minimum && (!isLoginOnly || IsLoginShell(account.shell));
      if (isWanted) {
        list->Add(MakeRecord(account));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemAccountList() {
  return std::make_shared<SystemAccountList>();
}

}  // namespace Kestrel::Host

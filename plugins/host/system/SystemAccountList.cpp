// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/metaobj/MetaInt.h>

#include <limits>
#include <memory>
#include <string_view>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/GroupNames.h"
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

std::string_view OrNone(std::string_view text) { return text.empty() ? "none" : text; }

/// Makes the rows. Many accounts have a group with the name and number of the account, and most
/// accounts have the same shell. So equal values are shared, in a row and between rows.
class AccountRows {
 public:
  std::shared_ptr<MetaObj::MetaStruct> ToStruct(const AccountEntry& account) {
    const auto name = SanitizedText(account.name);
    const auto id = MetaObj::MetaInt::New(static_cast<long>(account.id));
    const std::string_view group = groups_.Get(account.groupId);
    // Fields are set in the order in which a structure keeps them, so that none has to be moved.
    auto result = Shape().NewStruct();
    result->SetField("Full Name", fullNames_.Get(OrNone(account.fullName)));
    result->SetField("Group", group == account.name ? name : groupTexts_.Get(group));
    result->SetField("Group Id", account.groupId == account.id
                                     ? id
                                     : MetaObj::MetaInt::New(static_cast<long>(account.groupId)));
    result->SetField("Home", SanitizedText(OrNone(account.home)));
    result->SetField("Login", IsLoginShell(account.shell));
    result->SetField("Name", name);
    result->SetField("Shell", shells_.Get(account.shell));
    result->SetField("User Id", id);
    return result;
  }

 private:
  GroupNames groups_;
  RepeatedText groupTexts_;
  RepeatedText fullNames_;
  RepeatedText shells_;
};

class SystemAccountList final : public ListCommand {
 public:
  SystemAccountList()
      : ListCommand("List the accounts of users.", Shape,
                    "The accounts, in the order of the system.") {
    ShowColumns("Name,User Id,Login,Shell,Home", {{"wrap-last", "true"}});
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
    AccountRows maker;
    ForEachAccount([&](const AccountEntry& account) {
      if (names.Accepts(account.name) && account.id >= minimum &&
          (!isLoginOnly || IsLoginShell(account.shell))) {
        rows.Add(maker.ToStruct(account));
      }
    });
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemAccountList() {
  return std::make_shared<SystemAccountList>();
}

}  // namespace Kestrel::Host

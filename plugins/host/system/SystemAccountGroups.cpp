// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/metaobj/MetaList.h>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

class SystemAccountGroups final : public HostCommand {
 public:
  SystemAccountGroups() : HostCommand("List the groups that an account belongs to.") {
    ShowAsValue();
    AddMetaData("complete:name", "system.account.list Name");
    AddExample("--name=root", "List the groups of root");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::String, "The name of the account.")
        .Short("n")
        .Required()
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaList::New(MetaObj::MetaType::String));
    spec.SetDescription("The names of the groups, the primary group first.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::string& name = input.GetParameter("name");
    const auto account = FindAccount(name);
    if (!account) {
      output.AddErrorMessage("There is no account '" + name + "'");
      return;
    }
    const auto list = MetaObj::MetaList::New(MetaObj::MetaType::String);
    for (const std::string& group : ReadGroups(*account)) {
      list->Add(SanitizedText(group));
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemAccountGroups() {
  return std::make_shared<SystemAccountGroups>();
}

}  // namespace Kestrel::Host

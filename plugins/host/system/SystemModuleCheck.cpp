// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/metaobj/MetaBool.h>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/system/KernelModules.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

class SystemModuleCheck final : public HostCommand {
 public:
  SystemModuleCheck() : HostCommand("Show whether a module is loaded or built into the kernel.") {
    ShowAsValue();
    AddMetaData("complete:name", "system.module.list Name");
    AddExample("--name=kernel", "Show that the core of the kernel is built in");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::String, "The name of the module, %REGEX%.")
        .Short("n")
        .Required()
        .Matching("[A-Za-z0-9_-]+")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaBool::New());
    spec.SetDescription(
        "True when the module is loaded or built in; false when it can be loaded. A module that "
        "this machine does not have is an error.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    output.SetRootObject(
        MetaObj::MetaBool::New(HasModule(kProc, kSys, ModuleFolder(), input.GetParameter("name"))));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemModuleCheck() {
  return std::make_shared<SystemModuleCheck>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/KernelModules.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("KernelModule")
          .String("Name", "The name of the module.")
          .Int("Size", "The memory that it takes, in bytes.")
          .Int("References", "How many need it; -1 when it cannot be unloaded at all.")
          .Strings("Used By", "The modules that need it.")
          .String("State", "Live, Loading or Unloading.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const KernelModule& module) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(module.name));
  result->SetField("Size", module.size);
  result->SetField("References", module.references);
  result->SetField("Used By", module.users);
  result->SetField("State", SanitizedText(module.state));
  return result;
}

class SystemModuleList final : public HostCommand {
 public:
  SystemModuleList() : HostCommand("List the loaded modules of the kernel.") {
    ShowAsTable("KernelModule", "Name,Size,References,State,Used By",
                {{"units:KernelModule.Size", "B"}, {"wrap-last", "true"}});
    AddExample("", "List all loaded modules");
    AddExample("--unused", "List those that nothing needs");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("unused", CallSpec::Flag, "List only modules that nothing needs.")
        .Short("u")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The loaded modules by name.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const bool isUnusedOnly = input.IsFlagSet("unused");
    const auto list = Shape().NewList();
    for (const KernelModule& module : ReadModules(kProc)) {
      if (!isUnusedOnly || module.references == 0) {
        list->Add(ToStruct(module));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemModuleList() {
  return std::make_shared<SystemModuleList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/KernelModules.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("KernelModule")
          .Text("Name", "The name of the module.")
          .Number("Size", "The memory that it takes, in bytes.")
          .Number("References", "How many need it; -1 when it cannot be unloaded at all.")
          .Texts("Used By", "The modules that need it.")
          .Text("State", "Live, Loading or Unloading.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> MakeRecord(const KernelModule& module) {
  auto record = Shape().NewRecord();
  record->SetField("Name", OutsideText(module.name));
  record->SetField("Size", module.size);
  record->SetField("References", module.references);
  record->SetField("Used By", module.users);
  record->SetField("State", OutsideText(module.state));
  return record;
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
        list->Add(MakeRecord(module));
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

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/KernelModules.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("KernelModule")
          .String("Name", "The name of the module.")
          .Size("Size", "The size of its memory.")
          .Int("References", "How many users it has; -1 if it cannot be unloaded.")
          .Strings("Used By", "The modules that use it.")
          .String("State", "Live, Loading or Unloading.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const KernelModule& module) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(module.name));
  SetSize(*result, "Size", module.size);
  result->SetField("References", module.references);
  result->SetField("Used By", module.users);
  result->SetField("State", SanitizedText(module.state));
  return result;
}

class SystemModuleList final : public ListCommand {
 public:
  SystemModuleList()
      : ListCommand("List the loaded modules of the kernel.", Shape,
                    "The loaded modules, sorted by name.") {
    ShowColumns("Name,Size Bytes,References,State,Used By", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "system.module.list Name");
    AddExample("", "List all loaded modules");
    AddExample("--unused", "List the modules that are not used");
    AddExample("--human --sort=Size --descending --limit=5", "List the five largest modules");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::StringList,
              "List only modules with one of these names; * in a name stands for any text.")
        .Short("n")
        .AddTo(spec);
    Parameter("unused", CallSpec::Flag, "List only modules that are not used.")
        .Short("u")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter names(input, "name");
    const bool isUnusedOnly = input.IsFlagSet("unused");
    for (const KernelModule& module : ReadModules(kProc)) {
      if (names.Accepts(module.name) && (!isUnusedOnly || module.references == 0)) {
        rows.Add(ToStruct(module));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemModuleList() {
  return std::make_shared<SystemModuleList>();
}

}  // namespace Kestrel::Host

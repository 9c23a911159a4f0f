// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/Regex.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/KernelParameterName.h"
#include "plugins/host/system/KernelParameters.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("KernelParameter")
          .String("Name", "The name of the parameter.")
          .String("Value", "Its value, with spaces instead of tabs and line feeds.")
          .Bool("Writable", "Whether it can be changed.");
  return shape;
}

class SystemParameterList final : public ListCommand {
 public:
  SystemParameterList()
      : ListCommand("List the parameters of the running kernel.", Shape,
                    "The parameters that you may read, sorted by name.") {
    ShowColumns("Name,Value");
    AddExample("--under=vm", "List the parameters of the memory management");
    AddExample("--name=forward --writable", "List the writable parameters about forwarding");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("under", CallSpec::String,
              "List only this parameter or the parameters in this group, such as net.ipv4.")
        .Short("u")
        .Matching(kParameterNamePattern)
        .AddTo(spec);
    Parameter("name", CallSpec::String,
              "List only parameters whose names match this regular expression.")
        .Short("n")
        .AddTo(spec);
    Parameter("writable", CallSpec::Flag, "List only parameters that can be changed.")
        .Short("w")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const std::unique_ptr<Regex> pattern =
        input.HasParameter("name") ? std::make_unique<Regex>(input.GetParameter("name")) : nullptr;
    const bool isWritableOnly = input.IsFlagSet("writable");
    for (const KernelParameter& parameter : ReadParameters(kProc, input.GetParameter("under"))) {
      if ((isWritableOnly && !parameter.isWritable) ||
          (pattern != nullptr && !pattern->IsFoundIn(parameter.name))) {
        continue;
      }
      auto row = Shape().NewStruct();
      row->SetField("Name", SanitizedText(parameter.name));
      row->SetField("Value", SanitizedText(OnOneLine(parameter.value)));
      row->SetField("Writable", parameter.isWritable);
      rows.Add(row);
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemParameterList() {
  return std::make_shared<SystemParameterList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/TextPattern.h"
#include "plugins/host/system/KernelParameters.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("KernelParameter")
          .Text("Name", "The name of the parameter.")
          .Text("Value", "Its present value; tabs and line ends are written as blanks.")
          .Truth("Writable", "Whether it can be changed while the kernel runs.");
  return shape;
}

class SystemParameterList final : public HostCommand {
 public:
  SystemParameterList() : HostCommand("List the parameters of the running kernel.") {
    ShowAsTable("KernelParameter", "Name,Value");
    AddExample("--under=vm", "List the parameters of the memory management");
    AddExample("--name=forward --writable", "List what can be set about forwarding");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("under", CallSpec::String,
              "List only this parameter, or those below this group, like net.ipv4.")
        .Short("u")
        .Matching(kParameterNamePattern)
        .AddTo(spec);
    Parameter("name", CallSpec::String,
              "List only parameters with this regular expression in their names.")
        .Short("n")
        .AddTo(spec);
    Parameter("writable", CallSpec::Flag, "List only parameters that can be changed.")
        .Short("w")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The parameters that you may read, by name.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::unique_ptr<TextPattern> pattern =
        input.HasParameter("name") ? std::make_unique<TextPattern>(input.GetParameter("name"))
                                   : nullptr;
    const bool isWritableOnly = input.IsFlagSet("writable");
    const auto list = Shape().NewList();
    for (const KernelParameter& parameter : ReadParameters(kProc, input.GetParameter("under"))) {
      if ((isWritableOnly && !parameter.isWritable) ||
          (pattern != nullptr && !pattern->IsIn(parameter.name))) {
        continue;
      }
      auto record = Shape().NewRecord();
      record->SetField("Name", OutsideText(parameter.name));
      record->SetField("Value", OutsideText(OnOneLine(parameter.value)));
      record->SetField("Writable", parameter.isWritable);
      list->Add(record);
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemParameterList() {
  return std::make_shared<SystemParameterList>();
}

}  // namespace Kestrel::Host

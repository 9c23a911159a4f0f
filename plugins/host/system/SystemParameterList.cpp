// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
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
          .String("Value",
                  "Its value, with spaces instead of tabs and line feeds; \"unreadable\" if you "
                  "may not read it or it can only be written.")
          .Bool("Readable", "Whether the value was read.")
          .Bool("Writable", "Whether it can be changed.");
  return shape;
}

std::string ShownValue(const KernelParameter& parameter) {
  return parameter.isReadable ? OnOneLine(parameter.value) : "unreadable";
}

class SystemParameterList final : public ListCommand {
 public:
  SystemParameterList()
      : ListCommand("List the parameters of the running kernel.", Shape,
                    "The parameters, sorted by name.") {
    ShowColumns("Name,Value", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "system.parameter.list Name");
    AddExample("--under=vm", "List the parameters of the memory management");
    AddExample("--match=forward --writable", "List the writable parameters about forwarding");
    AddExample("--name=\"net.ipv4.conf.*.rp_filter\"", "Compare a parameter of all interfaces");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("under", CallSpec::String,
              "List only this parameter or the parameters in this group, such as net.ipv4.")
        .Short("u")
        .Matching(kParameterNamePattern)
        .AddTo(spec);
    Parameter("name", CallSpec::StringList,
              "List only parameters with one of these names; * in a name stands for any text.")
        .Short("n")
        .AddTo(spec);
    Parameter("match", CallSpec::String,
              "List only parameters whose names contain a match of this regular expression.")
        .Short("m")
        .AddTo(spec);
    Parameter("writable", CallSpec::Flag, "List only parameters that can be changed.")
        .Short("w")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const std::unique_ptr<Regex> pattern =
        input.HasParameter("match") ? std::make_unique<Regex>(input.GetParameter("match"))
                                    : nullptr;
    const NameFilter names(input, "name");
    const bool isWritableOnly = input.IsFlagSet("writable");
    for (const KernelParameter& parameter : ReadParameters(kProc, input.GetParameter("under"))) {
      if ((isWritableOnly && !parameter.isWritable) || !names.Accepts(parameter.name) ||
          (pattern != nullptr && !pattern->IsFoundIn(parameter.name))) {
        continue;
      }
      auto row = Shape().NewStruct();
      row->SetField("Name", SanitizedText(parameter.name));
      row->SetField("Value", SanitizedText(ShownValue(parameter)));
      row->SetField("Readable", parameter.isReadable);
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

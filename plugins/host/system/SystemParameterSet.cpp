// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/KernelParameters.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape = RecordShape("KernelParameterChange")
                                       .Text("Name", "The name of the parameter.")
                                       .Text("Before", "Its value before the change.")
                                       .Text("After", "Its value after the change.");
  return shape;
}

class SystemParameterSet final : public HostCommand {
 public:
  SystemParameterSet() : HostCommand("Change a parameter of the running kernel until it ends.") {
    ShowAsLines("KernelParameterChange", "Before,After",
                {{"header:KernelParameterChange", "%Name%"}});
    AddExample("--name=vm.swappiness --value=10", "Make the kernel keep programs in memory");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::String, "The name of the parameter, like vm.swappiness.")
        .Short("n")
        .Required()
        .Matching(kParameterNamePattern)
        .AddTo(spec);
    Parameter("value", CallSpec::String, "The value to give it; several numbers with blanks.")
        .Short("v")
        .Required()
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareRecord(spec, "The value of the parameter before and after the change.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::string& name = input.GetParameter("name");
    const std::string before = ReadIfPossible(name);
    WriteParameter(kProc, name, input.GetParameter("value"));
    const auto record = Shape().NewRecord();
    record->SetField("Name", OutsideText(name));
    record->SetField("Before", OutsideText(OnOneLine(before)));
    record->SetField("After", OutsideText(OnOneLine(ReadIfPossible(name))));
    output.SetRootObject(record);
  }

  // Some parameters are there to be written only; writing then says what else is wrong.
  static std::string ReadIfPossible(const std::string& name) {
    try {
      return ReadParameter(kProc, name);
    } catch (const KestrelException&) {
      return {};
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemParameterSet() {
  return std::make_shared<SystemParameterSet>();
}

}  // namespace Kestrel::Host

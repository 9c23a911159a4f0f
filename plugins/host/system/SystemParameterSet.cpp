// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/KernelParameterName.h"
#include "plugins/host/system/KernelParameters.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("KernelParameterChange")
          .String("Name", "The name of the parameter.")
          .String("Before",
                  "Its value before the change; \"unreadable\" if it can only be written.")
          .String("After", "Its value after the change; likewise.");
  return shape;
}

class SystemParameterSet final : public HostCommand {
 public:
  SystemParameterSet() : HostCommand("Change a parameter of the running kernel.") {
    ShowAsLines("KernelParameterChange", "Before,After",
                {{"header:KernelParameterChange", "%Name%"}});
    AddMetaData("changes", "true");
    AddMetaData("complete:name", "system.parameter.list Name");
    AddExample("--name=vm.swappiness --value=10", "Make the kernel swap less");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddParameterName(spec);
    Parameter("value", CallSpec::String, "The new value; spaces separate several numbers.")
        .Short("v")
        .Required()
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The value of the parameter before and after the change.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::string& name = input.GetParameter("name");
    const std::string before = ReadIfPossible(name);
    WriteParameter(kProc, name, input.GetParameter("value"));
    const auto result = Shape().NewStruct();
    result->SetField("Name", SanitizedText(name));
    result->SetField("Before", SanitizedText(OnOneLine(before)));
    result->SetField("After", SanitizedText(OnOneLine(ReadIfPossible(name))));
    output.SetRootObject(result);
  }

  // Some parameters are write-only. If there is another problem, writing reports it.
  static std::string ReadIfPossible(const std::string& name) {
    try {
      return ReadParameter(kProc, name);
    } catch (const KestrelException&) {
      return "unreadable";
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemParameterSet() {
  return std::make_shared<SystemParameterSet>();
}

}  // namespace Kestrel::Host

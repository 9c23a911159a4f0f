// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/metaobj/MetaString.h>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/KernelParameterName.h"
#include "plugins/host/system/KernelParameters.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

class SystemParameterGet final : public HostCommand {
 public:
  SystemParameterGet() : HostCommand("Show the value of a parameter of the running kernel.") {
    ShowAsValue();
    AddMetaData("complete:name", "system.parameter.list Name");
    AddExample("--name=kernel.hostname", "Show the name of the machine");
    AddExample("--name=net/ipv4/conf/lo/forwarding", "Use the path of a parameter as its name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddParameterName(spec); }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaString::New());
    spec.SetDescription("The value as the kernel writes it.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    output.SetRootObject(SanitizedLines(ReadParameter(kProc, input.GetParameter("name"))));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemParameterGet() {
  return std::make_shared<SystemParameterGet>();
}

}  // namespace Kestrel::Host

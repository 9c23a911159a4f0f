// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/metaobj/MetaInt.h>

#include <algorithm>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/system/Cpus.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

class SystemCpuCount final : public HostCommand {
 public:
  SystemCpuCount() : HostCommand("Count the logical processors.") {
    ShowAsValue();
    AddExample("", "Count the processors that are online");
    AddExample("--all", "Also count those that are offline");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("all", CallSpec::Flag, "Also count processors that are offline.")
        .Short("a")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaInt::New());
    spec.SetDescription("The number of logical processors.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const bool isAll = input.IsFlagSet("all");
    const auto cpus = ReadCpus(kProc, kSys);
    output.SetRootObject(MetaObj::MetaInt::New(std::count_if(
        cpus.begin(), cpus.end(), [isAll](const Cpu& cpu) { return isAll || cpu.isOnline; })));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemCpuCount() { return std::make_shared<SystemCpuCount>(); }

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/metaobj/MetaBool.h>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/package/PackageCommands.h"
#include "plugins/host/package/PackageDatabase.h"
#include "plugins/host/package/PackageParameters.h"

namespace Kestrel::Host {
namespace {

class PackageCheck final : public HostCommand {
 public:
  PackageCheck() : HostCommand("Report whether a package is installed.") {
    ShowAsValue();
    AddMetaData("complete:name", "package.list Name");
    AddExample("--name dpkg", "Report whether the program that manages packages is installed");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddPackageName(spec); }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    spec.SetRootObject(MetaObj::MetaBool::New());
    spec.SetDescription(
        "True when it is installed; false in every other state, such as half-installed. A package "
        "that is not known here is an error.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const PackageDatabase database;
    const Package& package = database.Require(input.GetParameter("name"));
    output.SetRootObject(MetaObj::MetaBool::New(package.IsInstalled()));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewPackageCheck() { return std::make_shared<PackageCheck>(); }

}  // namespace Kestrel::Host

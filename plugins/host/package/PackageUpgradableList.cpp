// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Which version of a package apt would install depends on the package lists, on pins and on
// priorities, so apt has to decide. This command runs a program of apt and does not use apt's
// library, which would be loaded together with this plug-in even for other commands. The program is
// "apt-cache policy": its output is meant for scripts, and it changes nothing and needs no
// privileges. "apt list" warns that its output may change. "apt-get --simulate" omits packages that
// are held back, and first resolves all dependencies, which takes several times as long.

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "plugins/host/frame/ChildProcess.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/package/DebianVersion.h"
#include "plugins/host/package/PackageCommands.h"
#include "plugins/host/package/PackageDatabase.h"
#include "plugins/host/package/PackageParameters.h"
#include "plugins/host/package/PackagePolicy.h"

namespace Kestrel::Host {
namespace {

constexpr char kProgram[] = "apt-cache";
// This number of names takes far fewer bytes than the kernel accepts as arguments of one program.
constexpr std::size_t kMaxNamesInACall = 10000;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("UpgradablePackage")
          .String("Name", "The name of the package.")
          .String("Architecture", "What it runs on, \"all\" for every machine.")
          .String("Version", "The version that is here.")
          .String("Available Version", "The newer version that apt would install.")
          .String("Source",
                  "Where apt would get it from; \"none\" when no list of packages has it.")
          .Bool("Held", "Whether it is held at its version, so that an upgrade leaves it out.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Package& package,
                                              const PackageCandidate& candidate) {
  auto row = Shape().NewStruct();
  row->SetField("Name", SanitizedText(package.name));
  row->SetField("Architecture", SanitizedText(package.architecture));
  row->SetField("Version", SanitizedText(package.version));
  row->SetField("Available Version", SanitizedText(candidate.version));
  row->SetField("Source", SanitizedText(TextOrNone(candidate.source)));
  row->SetField("Held", package.IsHeld());
  return row;
}

// Returns apt's name of a package: it includes the architecture unless that is the native one or
// "all".
std::string AptName(const Package& package, std::string_view native) {
  std::string name(package.name);
  if (package.architecture != native && package.architecture != "all") {
    name.append(1, ':').append(package.architecture);
  }
  return name;
}

std::string RequireProgram() {
  const std::optional<std::string> path = FindProgram(kProgram);
  if (!path) {
    throw KestrelException(std::string("There is no program ") + kProgram +
                           " (package apt) in PATH, which knows the available versions");
  }
  return *path;
}

void Ask(const std::string& program, const std::vector<std::string>& names, PackagePolicy& policy) {
  std::vector<std::string> arguments = {"policy", "--"};
  arguments.insert(arguments.end(), names.begin(), names.end());
  const ProgramResult result = RunProgram(program, arguments);
  if (result.status != 0) {
    throw KestrelException(std::string(kProgram) + " failed: " + result.GetReason());
  }
  policy.Add(result.output);
}

PackagePolicy AskPolicy(const std::vector<std::string>& names) {
  const std::string program = RequireProgram();
  PackagePolicy policy;
  for (std::size_t start = 0; start < names.size(); start += kMaxNamesInACall) {
    const std::size_t end = std::min(start + kMaxNamesInACall, names.size());
    Ask(program,
        {names.begin() + static_cast<std::ptrdiff_t>(start),
         names.begin() + static_cast<std::ptrdiff_t>(end)},
        policy);
  }
  // Without package lists, every package would seem to be up to date.
  if (!names.empty() && !policy.hasLists) {
    throw KestrelException("apt has no lists of available packages; 'apt-get update' fetches them");
  }
  return policy;
}

const PackageCandidate& RequireCandidate(const PackagePolicy& policy, const std::string& name) {
  const auto found = policy.candidates.find(name);
  if (found == policy.candidates.end() || !found->second.isKnown) {
    throw KestrelException(std::string(kProgram) + " returned nothing about the package '" + name +
                           "'");
  }
  return found->second;
}

class PackageUpgradableList final : public ListCommand {
 public:
  PackageUpgradableList()
      : ListCommand("List the packages of which a newer version is available.", Shape,
                    "The packages in the order of their names.") {
    ShowColumns("Name,Version,Available Version,Held");
    AddMetaData("complete:name", "package.list Name");
    AddExample("", "List what the next upgrade would replace");
    AddExample("--name 'linux-*'", "List whether there is a newer kernel");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddPackageNames(spec); }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const PackageNames chosen(input);
    const PackageDatabase database;
    const std::string_view native = database.GetNativeArchitecture();
    std::vector<const Package*> packages;
    std::vector<std::string> names;
    for (const Package& package : database.GetPackages()) {
      // A package without a version is not installed yet.
      if (package.IsUnpacked() && !package.version.empty() && chosen.Accept(package)) {
        packages.push_back(&package);
        names.push_back(AptName(package, native));
      }
    }
    const PackagePolicy policy = AskPolicy(names);
    for (std::size_t index = 0; index < names.size(); ++index) {
      const PackageCandidate& candidate = RequireCandidate(policy, names[index]);
      if (CompareVersions(candidate.version, packages[index]->version) > 0) {
        rows.Add(ToStruct(*packages[index], candidate));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewPackageUpgradableList() {
  return std::make_shared<PackageUpgradableList>();
}

}  // namespace Kestrel::Host

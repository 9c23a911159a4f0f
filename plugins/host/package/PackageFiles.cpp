// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/package/InstalledFiles.h"
#include "plugins/host/package/PackageCommands.h"
#include "plugins/host/package/PackageDatabase.h"
#include "plugins/host/package/PackageParameters.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("PackageFile")
          .String("Path", "A file or directory of the package.")
          .String("Diverted To",
                  "Its actual path, if another package or the administrator uses this path; "
                  "otherwise \"none\".");
  return shape;
}

class PackageFiles final : public ListCommand {
 public:
  PackageFiles()
      : ListCommand("List the files of a package.", Shape,
                    "The files and directories in the order in which they were recorded.") {
    ShowColumns("Path", {{"show-header", "false"}});
    AddMetaData("complete:name", "package.list Name");
    AddExample("--name dpkg", "List the files of the program that manages packages");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddPackageName(spec); }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const PackageDatabase database;
    for (const InstalledFile& file :
         ReadInstalledFiles(database.Require(input.GetParameter("name")))) {
      auto row = Shape().NewStruct();
      row->SetField("Path", SanitizedText(file.path));
      row->SetField("Diverted To", SanitizedText(TextOrNone(file.divertedTo)));
      rows.Add(row);
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewPackageFiles() { return std::make_shared<PackageFiles>(); }

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <sys/sysmacros.h>

#include <string>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/frame/ValueList.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("StorageMount")
          .Text("Mount Point", "The directory that the file system is mounted on.")
          .Text("Source", "What is mounted: a device, a server's path or a word of the kernel's.")
          .Text("Type", "The type of the file system.")
          .Texts("Options", "The options that it is mounted with.")
          .Text("Root", "The folder of the file system that is mounted; / for all of it.")
          .Text("Device", "The number of the device or file system, as major:minor.")
          .Number("Id", "The mount's own number.")
          .Number("Parent Id", "The number of the mount that the mount point lies in.")
          .Truth("Read Only", "Whether nothing can be written through this mount.")
          .Truth("Hidden", "Whether another mount lies over it, so that no path leads to it.");
  return shape;
}

// Whether `path` is `folder` or lies below it.
bool LiesBelow(const std::string& path, const std::string& folder) {
  const std::string trimmed = folder.substr(0, folder.find_last_not_of('/') + 1);
  return path.compare(0, trimmed.size(), trimmed) == 0 &&
         (path.size() == trimmed.size() || path[trimmed.size()] == '/');
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const Mount& mount) {
  auto record = Shape().NewRecord();
  record->SetField("Mount Point", OutsideText(mount.target));
  record->SetField("Source", OutsideText(mount.source));
  record->SetField("Type", OutsideText(mount.type));
  record->SetField("Options", OutsideTexts(mount.options));
  record->SetField("Root", OutsideText(mount.root));
  record->SetField("Device",
                   std::to_string(major(mount.device)) + ":" + std::to_string(minor(mount.device)));
  record->SetField("Id", mount.id);
  record->SetField("Parent Id", mount.parentId);
  record->SetField("Read Only", mount.HasOption("ro"));
  record->SetField("Hidden", mount.isHidden);
  return record;
}

class StorageMountList final : public HostCommand {
 public:
  StorageMountList() : HostCommand("List the mounted file systems.") {
    ShowAsTable("StorageMount", "Type,Read Only,Source,Mount Point");
    AddExample("", "List every mount that a path leads to");
    AddExample("--type ext4 --type xfs", "List the mounts of two types of file system");
    AddExample("--below /srv --read-only false", "List what can be written to below /srv");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("type", CallSpec::StringList, "List file systems of this type only.")
        .Short("t")
        .AddTo(spec);
    Parameter("option", CallSpec::StringList, "List mounts with this option only.")
        .Short("o")
        .AddTo(spec);
    Parameter("below", CallSpec::String,
              "List mounts on this directory and below it only; %REGEX%.")
        .Short("b")
        .Matching("/.*")
        .AddTo(spec);
    Parameter("read-only", CallSpec::Bool,
              "List mounts that are read-only (true) or that are not (false).")
        .Short("r")
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List also mounts that another one hides.")
        .Short("a")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The mounts, in the order in which they were made.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const TextFilter types(input, "type");
    const TextFilter options(input, "option");
    const TruthFilter readOnly(input, "read-only");
    const std::string& below = input.GetParameter("below");
    const bool isEverythingListed = input.IsFlagSet("all");
    const auto list = Shape().NewList();
    for (const Mount& mount : ReadMounts()) {
      if ((isEverythingListed || !mount.isHidden) && types.Accepts(mount.type) &&
          options.AcceptsOneOf(mount.options) && readOnly.Accepts(mount.HasOption("ro")) &&
          LiesBelow(mount.target, below)) {
        list->Add(ToRecord(mount));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewStorageMountList() {
  return std::make_shared<StorageMountList>();
}

}  // namespace Kestrel::Host

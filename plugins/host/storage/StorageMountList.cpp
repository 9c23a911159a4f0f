// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <string>

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("StorageMount")
          .String("Mount Point", "The directory that the file system is mounted on.")
          .String("Source",
                  "What is mounted: a device, a path on a server or a word such as tmpfs.")
          .String("Type", "The type of the file system.")
          .Strings("Options", "The mount options.")
          .String("Root", "The mounted folder of the file system; / for all of it.")
          .String("Device", "The number of the device or file system, as major:minor.")
          .Int("Id", "The number of the mount.")
          .Int("Parent Id", "The number of the mount that contains the mount point.")
          .Bool("Read Only", "Whether it is mounted read-only.")
          .Bool("Hidden", "Whether no path leads to it, because of a mount over it.");
  return shape;
}

// Returns whether `path` is `folder` or a path below it.
bool LiesBelow(const std::string& path, const std::string& folder) {
  const std::string trimmed = folder.substr(0, folder.find_last_not_of('/') + 1);
  return path.compare(0, trimmed.size(), trimmed) == 0 &&
         (path.size() == trimmed.size() || path[trimmed.size()] == '/');
}

// Returns the folder as an absolute path without "." and ".."; empty if none is given.
std::string GetFolder(const CallSpec::Input& input) {
  const std::string& below = input.GetParameter("below");
  return below.empty() ? below : std::filesystem::absolute(below).lexically_normal().string();
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Mount& mount) {
  auto result = Shape().NewStruct();
  result->SetField("Mount Point", SanitizedText(mount.target));
  result->SetField("Source", SanitizedText(mount.source));
  result->SetField("Type", SanitizedText(mount.type));
  result->SetField("Options", SanitizedList(mount.options));
  result->SetField("Root", SanitizedText(mount.root));
  result->SetField("Device", FormatDeviceNumber(mount.device));
  result->SetField("Id", mount.id);
  result->SetField("Parent Id", mount.parentId);
  result->SetField("Read Only", mount.HasOption("ro"));
  result->SetField("Hidden", mount.isHidden);
  return result;
}

class StorageMountList final : public ListCommand {
 public:
  StorageMountList()
      : ListCommand("List the mounted file systems.", Shape,
                    "The mounts, in the order in which they were made.") {
    ShowColumns("Type,Read Only,Source,Mount Point", {{"wrap-last", "true"}});
    AddMetaData("complete:type", "storage.mount.list Type");
    AddMetaData("complete:option", "storage.mount.list Options");
    AddMetaData("complete:below", "directory");
    AddExample("", "List every mount that a path leads to");
    AddExample("--type ext4 --type xfs", "List the mounts of two types of file system");
    AddExample("--below /srv --read-only false", "List the writable mounts below /srv");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("type", CallSpec::StringList, "List only file systems of this type.")
        .Short("t")
        .AddTo(spec);
    Parameter("option", CallSpec::StringList, "List only mounts with this option.")
        .Short("o")
        .AddTo(spec);
    Parameter("below", CallSpec::String, "List only mounts on this directory and below it.")
        .Short("b")
        .AddTo(spec);
    Parameter("read-only", CallSpec::Bool,
              "List only mounts that are read-only (true) or writable (false).")
        .Short("r")
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "Also list mounts that another one hides.")
        .Short("a")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const StringFilter types(input, "type");
    const StringFilter options(input, "option");
    const BoolFilter readOnly(input, "read-only");
    const std::string below = GetFolder(input);
    const bool isAll = input.IsFlagSet("all");
    for (const Mount& mount : ReadMounts()) {
      if ((isAll || !mount.isHidden) && types.Accepts(mount.type) &&
          options.AcceptsAnyOf(mount.options) && readOnly.Accepts(mount.HasOption("ro")) &&
          LiesBelow(mount.target, below)) {
        rows.Add(ToStruct(mount));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewStorageMountList() {
  return std::make_shared<StorageMountList>();
}

}  // namespace Kestrel::Host

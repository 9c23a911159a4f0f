// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/storage/FilesystemProbe.h"
#include "plugins/host/storage/FilesystemUsage.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

constexpr long kDefaultTimeout = 3;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("StorageFilesystem")
          .String("Mount Point", "The directory that the file system is mounted on.")
          .String("Source",
                  "What is mounted: a device, a path on a server or a word such as tmpfs.")
          .String("Type", "The type of the file system.")
          .Size("Size", "Its size.")
          .Size("Used", "The used space.")
          .Size("Available", "The space available to all users.")
          .Int("Percent", "The used part of the used and available space, in percent, rounded up.")
          .Int("Inodes", "How many files it can contain; 0 if there is no limit.")
          .Int("Used Inodes", "How many files it contains; 0 if there is no limit.")
          .String("Status",
                  "\"ok\", \"no answer\" if it did not respond, or the reason of a failure; the "
                  "numbers are then 0.");
  return shape;
}

std::string StatusText(int error) {
  if (error == 0) {
    return "ok";
  }
  return error == ETIMEDOUT ? "no answer" : std::strerror(error);
}

struct Filesystem {
  Mount mount;
  FilesystemAnswer answer;
};

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Filesystem& filesystem) {
  const FilesystemUsage& usage = filesystem.answer.usage;
  auto result = Shape().NewStruct();
  result->SetField("Mount Point", SanitizedText(filesystem.mount.target));
  result->SetField("Source", SanitizedText(filesystem.mount.source));
  result->SetField("Type", SanitizedText(filesystem.mount.type));
  SetSize(*result, "Size", ToLong(usage.size));
  SetSize(*result, "Used", ToLong(usage.GetUsed()));
  SetSize(*result, "Available", ToLong(usage.available));
  result->SetField("Percent", usage.GetPercent());
  result->SetField("Inodes", ToLong(usage.inodes));
  result->SetField("Used Inodes", ToLong(usage.GetUsedInodes()));
  result->SetField("Status", StatusText(filesystem.answer.error));
  return result;
}

// Keeps one mount of each file system: the first that shows all of it, otherwise the first.
std::vector<Mount> WithoutDuplicates(const std::vector<Mount>& mounts) {
  std::vector<Mount> kept;
  std::map<dev_t, std::size_t> places;
  for (const Mount& mount : mounts) {
    const auto [place, isNew] = places.emplace(mount.device, kept.size());
    if (isNew) {
      kept.push_back(mount);
    } else if (kept[place->second].root != "/" && mount.root == "/") {
      kept[place->second] = mount;
    }
  }
  return kept;
}

class StorageFilesystemList final : public ListCommand {
 public:
  StorageFilesystemList()
      : ListCommand("List the usage of the mounted file systems.", Shape,
                    "The file systems, in the order in which they were mounted.") {
    ShowColumns("Source,Available Bytes,Percent,Status,Mount Point",
                {{"units:StorageFilesystem.Percent", "%"}, {"wrap-last", "true"}});
    AddMetaData("complete:type", "storage.mount.list Type");
    AddExample("--human", "List all file systems with a size");
    AddExample("--minimum-percent 90", "List those that are nearly full");
    AddExample("--type nfs4 --timeout 10", "Wait ten seconds for slow servers");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("type", CallSpec::StringList, "List only file systems of this type.")
        .Short("t")
        .AddTo(spec);
    Parameter("minimum-percent", CallSpec::Int,
              "List only file systems that are used at least that much, in percent; %ENUM%.")
        .Short("m")
        .Between(0, 100)
        .AddTo(spec);
    Parameter("timeout", CallSpec::Int,
              "How many seconds to wait for a file system; the default is 3; %ENUM%.")
        .Short("s")
        .Between(1, 60)
        .AddTo(spec);
    Parameter("all", CallSpec::Flag,
              "Also list file systems of size 0, and further mounts of the same file system.")
        .Short("a")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const bool isAll = input.IsFlagSet("all");
    const long timeout =
        input.HasParameter("timeout") ? input.GetParameterInt("timeout") : kDefaultTimeout;
    for (const Filesystem& filesystem :
         Ask(Choose(StringFilter(input, "type"), isAll), std::chrono::seconds(timeout))) {
      const bool isEmpty = filesystem.answer.error == 0 && filesystem.answer.usage.size == 0;
      if ((isAll || !isEmpty) &&
          filesystem.answer.usage.GetPercent() >= input.GetParameterInt("minimum-percent")) {
        rows.Add(ToStruct(filesystem));
      }
    }
  }

  static std::vector<Mount> Choose(const StringFilter& types, bool isAll) {
    std::vector<Mount> chosen;
    for (const Mount& mount : ReadMounts()) {
      // A query would make the automounter mount something.
      if (!mount.isHidden && mount.type != "autofs" && types.Accepts(mount.type)) {
        chosen.push_back(mount);
      }
    }
    return isAll ? chosen : WithoutDuplicates(chosen);
  }

  static std::vector<Filesystem> Ask(const std::vector<Mount>& mounts,
                                     std::chrono::milliseconds timeout) {
    std::vector<std::string> paths;
    paths.reserve(mounts.size());
    for (const Mount& mount : mounts) {
      paths.push_back(mount.target);
    }
    const std::vector<FilesystemAnswer> answers = ProbeFilesystems(paths, timeout);
    std::vector<Filesystem> filesystems;
    for (std::size_t index = 0; index < mounts.size(); ++index) {
      filesystems.push_back({mounts[index], answers[index]});
    }
    return filesystems;
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewStorageFilesystemList() {
  return std::make_shared<StorageFilesystemList>();
}

}  // namespace Kestrel::Host

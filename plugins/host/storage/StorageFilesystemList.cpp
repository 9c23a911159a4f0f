// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/storage/FilesystemProbe.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

constexpr long kDefaultTimeout = 3;

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("StorageFilesystem")
          .Text("Mount Point", "The directory that the file system is mounted on.")
          .Text("Source", "What is mounted: a device, a server's path or a word of the kernel's.")
          .Text("Type", "The type of the file system.")
          .Number("Size", "What it holds, in MiB, rounded up.")
          .Number("Used", "What is taken, in MiB, rounded up.")
          .Number("Available", "What anyone may still take, in MiB, rounded up.")
          .Number("Percent", "How much of what anyone may take is taken, in percent, rounded up.")
          .Number("Size Bytes", "What it holds, in bytes.")
          .Number("Used Bytes", "What is taken, in bytes.")
          .Number("Available Bytes", "What anyone may still take, in bytes.")
          .Number("Inodes", "How many files it can hold; 0 when it sets no limit.")
          .Number("Used Inodes", "How many files it holds; 0 when it sets no limit.")
          .Text("Status",
                "\"ok\", \"no answer\" when it kept silent, or why it could not be asked; all "
                "numbers are then 0.");
  return shape;
}

long ToLong(std::uint64_t value) {
  constexpr std::uint64_t kMost = std::numeric_limits<long>::max();
  return static_cast<long>(value < kMost ? value : kMost);
}

long ToMebibytes(std::uint64_t bytes) {
  constexpr std::uint64_t kMebibyte = 1 << 20;
  return ToLong(bytes / kMebibyte + (bytes % kMebibyte != 0 ? 1 : 0));
}

long ToPercent(std::uint64_t used, std::uint64_t available) {
  const long double all = static_cast<long double>(used) + available;
  if (all == 0) {
    return 0;
  }
  const long double percent = 100 * static_cast<long double>(used) / all;
  const long whole = static_cast<long>(percent);
  return whole + (percent > whole ? 1 : 0);
}

std::uint64_t Less(std::uint64_t all, std::uint64_t free) { return all > free ? all - free : 0; }

std::string StatusText(int error) {
  if (error == 0) {
    return "ok";
  }
  return error == ETIMEDOUT ? "no answer" : std::strerror(error);
}

struct Filesystem {
  Mount mount;
  FilesystemAnswer answer;

  std::uint64_t GetUsed() const { return Less(answer.usage.size, answer.usage.free); }
  long GetPercent() const { return ToPercent(GetUsed(), answer.usage.available); }
};

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const Filesystem& filesystem) {
  const FilesystemUsage& usage = filesystem.answer.usage;
  auto record = Shape().NewRecord();
  record->SetField("Mount Point", OutsideText(filesystem.mount.target));
  record->SetField("Source", OutsideText(filesystem.mount.source));
  record->SetField("Type", OutsideText(filesystem.mount.type));
  record->SetField("Size", ToMebibytes(usage.size));
  record->SetField("Used", ToMebibytes(filesystem.GetUsed()));
  record->SetField("Available", ToMebibytes(usage.available));
  record->SetField("Percent", filesystem.GetPercent());
  record->SetField("Size Bytes", ToLong(usage.size));
  record->SetField("Used Bytes", ToLong(filesystem.GetUsed()));
  record->SetField("Available Bytes", ToLong(usage.available));
  record->SetField("Inodes", ToLong(usage.inodes));
  record->SetField("Used Inodes", ToLong(Less(usage.inodes, usage.freeInodes)));
  record->SetField("Status", StatusText(filesystem.answer.error));
  return record;
}

// Of several mounts of one file system the one that shows it whole, else the first.
std::vector<Mount> WithoutRepeats(const std::vector<Mount>& mounts) {
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

class StorageFilesystemList final : public HostCommand {
 public:
  StorageFilesystemList() : HostCommand("List how full the mounted file systems are.") {
    ShowAsTable("StorageFilesystem", "Type,Size,Used,Available,Percent,Status,Mount Point",
                {{"units:StorageFilesystem.Size", "MiB"},
                 {"units:StorageFilesystem.Used", "MiB"},
                 {"units:StorageFilesystem.Available", "MiB"},
                 {"units:StorageFilesystem.Percent", "%"}});
    AddExample("", "List the file systems that hold something");
    AddExample("--minimum-percent 90", "List those that are nearly full");
    AddExample("--type nfs4 --timeout 10", "Give slow servers ten seconds to answer");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("type", CallSpec::StringList, "List file systems of this type only.")
        .Short("t")
        .AddTo(spec);
    Parameter("minimum-percent", CallSpec::Int,
              "List file systems only that are filled at least that much, in percent; %ENUM%.")
        .Short("m")
        .Between(0, 100)
        .AddTo(spec);
    Parameter("timeout", CallSpec::Int,
              "How many seconds a silent file system is waited for, 3 unless given; %ENUM%.")
        .Short("s")
        .Between(1, 60)
        .AddTo(spec);
    Parameter("all", CallSpec::Flag,
              "List also file systems that hold nothing, and further mounts of the same one.")
        .Short("a")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The file systems, in the order in which they were mounted.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const bool isEverythingListed = input.IsFlagSet("all");
    const long timeout =
        input.HasParameter("timeout") ? input.GetParameterInt("timeout") : kDefaultTimeout;
    const auto list = Shape().NewList();
    for (const Filesystem& filesystem : Ask(Choose(TextFilter(input, "type"), isEverythingListed),
                                            std::chrono::seconds(timeout))) {
      const bool isEmpty = filesystem.answer.error == 0 && filesystem.answer.usage.size == 0;
      if ((isEverythingListed || !isEmpty) &&
          filesystem.GetPercent() >= input.GetParameterInt("minimum-percent")) {
        list->Add(ToRecord(filesystem));
      }
    }
    output.SetRootObject(list);
  }

  static std::vector<Mount> Choose(const TextFilter& types, bool isEverythingListed) {
    std::vector<Mount> chosen;
    for (const Mount& mount : ReadMounts()) {
      // Whoever asks the automounter's mount point makes it mount what belongs there.
      if (!mount.isHidden && mount.type != "autofs" && types.Accepts(mount.type)) {
        chosen.push_back(mount);
      }
    }
    return isEverythingListed ? chosen : WithoutRepeats(chosen);
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

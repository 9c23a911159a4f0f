// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/storage/DiskCounters.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

constexpr long kMaxInterval = 3600;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("StorageDeviceCounter")
          .String("Name", "The device's name below /dev.")
          .Int("Reads", "How many reads were completed.")
          .Int("Reads Merged", "How many reads were added to another one.")
          .Size("Read", "What was read.")
          .Int("Read Milliseconds", "The sum of the times of all reads, in milliseconds.")
          .Int("Writes", "How many writes were completed.")
          .Int("Writes Merged", "How many writes were added to another one.")
          .Size("Written", "What was written.")
          .Int("Write Milliseconds", "The sum of the times of all writes, in milliseconds.")
          .Int("Discards", "How many discards were completed.")
          .Size("Discarded", "What was discarded.")
          .Int("Discard Milliseconds", "The sum of the times of all discards, in milliseconds.")
          .Int("Flushes", "How many flushes were completed.")
          .Int("Flush Milliseconds", "The sum of the times of all flushes, in milliseconds.")
          .Int("In Progress", "How many requests there are at this moment.")
          .Int("Busy Milliseconds", "How long there was at least one request, in milliseconds.")
          .Int("Queued Milliseconds",
               "That time multiplied by the requests in progress, in milliseconds.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const DiskCounters& counters) {
  auto row = Shape().NewStruct();
  row->SetField("Name", SanitizedText(counters.name));
  row->SetField("Reads", counters.reads.count);
  row->SetField("Reads Merged", counters.reads.merged);
  SetSize(*row, "Read", counters.reads.bytes);
  row->SetField("Read Milliseconds", counters.reads.milliseconds);
  row->SetField("Writes", counters.writes.count);
  row->SetField("Writes Merged", counters.writes.merged);
  SetSize(*row, "Written", counters.writes.bytes);
  row->SetField("Write Milliseconds", counters.writes.milliseconds);
  row->SetField("Discards", counters.discards.count);
  SetSize(*row, "Discarded", counters.discards.bytes);
  row->SetField("Discard Milliseconds", counters.discards.milliseconds);
  row->SetField("Flushes", counters.flushes);
  row->SetField("Flush Milliseconds", counters.flushMilliseconds);
  row->SetField("In Progress", counters.inProgress);
  row->SetField("Busy Milliseconds", counters.busyMilliseconds);
  row->SetField("Queued Milliseconds", counters.queuedMilliseconds);
  return row;
}

// Returns all devices, or only those that were used since the start of the machine.
std::vector<DiskCounters> ReadCounters(bool isAll) {
  std::vector<DiskCounters> devices = ReadDiskCounters();
  if (!isAll) {
    devices.erase(std::remove_if(devices.begin(), devices.end(),
                                 [](const DiskCounters& device) { return device.IsUnused(); }),
                  devices.end());
  }
  return devices;
}

// Returns what is counted during the next `seconds`.
std::vector<DiskCounters> Count(long seconds, bool isAll) {
  const std::vector<DiskCounters> first = ReadDiskCounters();
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  return CountedBetween(first, ReadCounters(isAll));
}

class StorageDeviceCounterList final : public ListCommand {
 public:
  StorageDeviceCounterList()
      : ListCommand("List what devices have read and written.", Shape,
                    "The devices, in the order of the kernel.") {
    ShowColumns("Reads,Read Bytes,Writes,Written Bytes,Busy Milliseconds,Name",
                {{"wrap-last", "true"}});
    AddMetaData("complete:name", "storage.device.list Name");
    AddExample("", "List what was counted since the start of the machine");
    AddExample("--interval 1 --human", "List what is counted during one second");
    AddExample("--name 'sd*' --name 'nvme*'", "List disks and their partitions by name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::StringList,
              "List only devices of this name, in which * stands for anything.")
        .Short("n")
        .AddTo(spec);
    Parameter("interval", CallSpec::Int,
              "Count for that many seconds, not since the start of the machine; %ENUM%.")
        .Short("i")
        .Between(1, kMaxInterval)
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "Also list devices that were never used.")
        .Short("a")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter names(input, "name");
    const bool isAll = input.IsFlagSet("all");
    for (const DiskCounters& counters : input.HasParameter("interval")
                                            ? Count(input.GetParameterInt("interval"), isAll)
                                            : ReadCounters(isAll)) {
      if (names.Accepts(counters.name)) {
        rows.Add(ToStruct(counters));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewStorageDeviceCounterList() {
  return std::make_shared<StorageDeviceCounterList>();
}

}  // namespace Kestrel::Host

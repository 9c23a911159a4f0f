// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <optional>
#include <string>

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/storage/BlockDevices.h"
#include "plugins/host/storage/DeviceContent.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

constexpr long kMebibyte = 1 << 20;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("StorageDevice")
          .String("Name", "The device's name below /dev.")
          .String("Kind",
                  "Its kind: disk, part (partition), rom, loop, or a kind of volume such as lvm, "
                  "crypt or raid1.")
          .String("Number", "The device's number, as major:minor.")
          .Size("Size", "Its size.")
          .Int("Sector Size", "The size of a sector in bytes.")
          .Bool("Read Only", "Whether it is read-only.")
          .Bool("Removable", "Whether its medium can be removed.")
          .Bool("Rotational", "Whether its medium rotates, as in a hard disk.")
          .String("Model", "The model of a disk; \"none\" if it does not report one.")
          .String("Transport",
                  "What connects a disk, such as sata, sas, usb, nvme or virtio; \"none\" if "
                  "nothing is known to do so.")
          .Strings("Parents", "The devices that it is part of or consists of; none for a disk.")
          .String("Filesystem",
                  "The type of its content; \"none\" if it has none, \"unknown\" if neither the "
                  "device manager nor the device can be asked.")
          .String("Label", "The label of its content; \"none\" and \"unknown\" as above.")
          .String("UUID", "The identifier of its content; \"none\" and \"unknown\" as above.")
          .String("Partition Label",
                  "Its label in the table of partitions; \"none\" and \"unknown\" as above.")
          .String("Partition UUID",
                  "Its identifier in the table of partitions; \"none\" and \"unknown\" as above.")
          .Strings("Mount Points", "The directories that it is mounted on.");
  return shape;
}

// A device without a medium contains nothing.
std::optional<DeviceContent> ReadContent(const BlockDevice& device) {
  return device.size == 0 ? DeviceContent() : ReadDeviceContent(device.name, device.number);
}

std::shared_ptr<MetaObj::MetaString> TextOrNone(const std::string& text) {
  return SanitizedText(text.empty() ? "none" : text);
}

void SetContent(const std::optional<DeviceContent>& content, MetaObj::MetaStruct& row) {
  const auto set = [&](const char* field, std::string DeviceContent::*text) {
    row.SetField(field, content ? TextOrNone((*content).*text) : SanitizedText("unknown"));
  };
  set("Filesystem", &DeviceContent::filesystem);
  set("Label", &DeviceContent::label);
  set("UUID", &DeviceContent::uuid);
  set("Partition Label", &DeviceContent::partitionLabel);
  set("Partition UUID", &DeviceContent::partitionUuid);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const BlockDevice& device) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(device.name));
  result->SetField("Kind", SanitizedText(device.kind));
  result->SetField("Number", FormatDeviceNumber(device.number));
  SetSize(*result, "Size", device.size);
  result->SetField("Sector Size", device.sectorSize);
  result->SetField("Read Only", device.isReadOnly);
  result->SetField("Removable", device.isRemovable);
  result->SetField("Rotational", device.isRotational);
  result->SetField("Model", TextOrNone(device.model));
  result->SetField("Transport", TextOrNone(device.transport));
  result->SetField("Parents", SanitizedList(device.parents));
  result->SetField("Mount Points", SanitizedList(device.mountPoints));
  SetContent(ReadContent(device), *result);
  return result;
}

class StorageDeviceList final : public ListCommand {
 public:
  StorageDeviceList()
      : ListCommand("List the block devices: disks, partitions and volumes.", Shape,
                    "The block devices, sorted by name, each disk followed by its partitions.") {
    ShowColumns("Name,Kind,Size Bytes,Transport,Filesystem,Mount Points", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "storage.device.list Name");
    AddExample("", "List all devices with a size");
    AddExample("--kind disk --removable false", "List the disks that cannot be removed");
    AddExample("--name 'sd*' --name 'nvme*' --human", "List disks and their partitions by name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("name", CallSpec::StringList,
              "List only devices of this name, without /dev/, in which * stands for anything.")
        .Short("n")
        .AddTo(spec);
    Parameter("kind", CallSpec::StringList, "List only devices of this kind:%FULLENUM%")
        .Short("k")
        .OneOf({{"disk", "a whole disk"},
                {"part", "a partition"},
                {"rom", "an optical drive"},
                {"loop", "a file used as a device"},
                {"lvm", "a logical volume"},
                {"crypt", "an encrypted volume"},
                {"mpath", "a disk with several paths"},
                {"dm", "another mapped volume"},
                {"raid0", "a striped array"},
                {"raid1", "a mirrored array"},
                {"raid4", "an array with one disk of parity"},
                {"raid5", "an array with distributed parity"},
                {"raid6", "an array with double parity"},
                {"raid10", "a striped array of mirrors"},
                {"linear", "a concatenation of disks"}})
        .AddTo(spec);
    Parameter("minimum-size", CallSpec::Int,
              "List only devices of at least this size in MiB; %ENUM%.")
        .Short("m")
        .Between(0, 1L << 40)
        .AddTo(spec);
    Parameter("read-only", CallSpec::Bool,
              "List only devices that are read-only (true) or writable (false).")
        .Short("r")
        .AddTo(spec);
    Parameter("removable", CallSpec::Bool,
              "List only devices that are removable (true) or not (false).")
        .Short("R")
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "Also list devices of size 0.").Short("a").AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter names(input, "name");
    const StringFilter kinds(input, "kind");
    const BoolFilter readOnly(input, "read-only");
    const BoolFilter removable(input, "removable");
    const bool isAll = input.IsFlagSet("all");
    for (const BlockDevice& device : ReadBlockDevices(kSys, ReadMounts())) {
      if ((isAll || device.size > 0) && names.Accepts(device.name) && kinds.Accepts(device.kind) &&
          readOnly.Accepts(device.isReadOnly) && removable.Accepts(device.isRemovable) &&
          device.size / kMebibyte >= input.GetParameterInt("minimum-size")) {
        rows.Add(ToStruct(device));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewStorageDeviceList() {
  return std::make_shared<StorageDeviceList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/storage/BlockDevices.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/StorageCommands.h"

namespace Kestrel::Host {
namespace {

constexpr long kMebibyte = 1 << 20;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("StorageDevice")
          .String("Name", "The device's name below /dev.")
          .String(
              "Kind",
              "What it is: disk, part of a disk, rom, loop (over a file), or the kind of volume, "
              "such as lvm, crypt or raid1.")
          .String("Number", "The device's number, as major:minor.")
          .Int("Size", "What it holds, in MiB, rounded down.")
          .Int("Size Bytes", "What it holds, in bytes.")
          .Int("Sector Size", "The smallest piece that it reads or writes, in bytes.")
          .Bool("Read Only", "Whether it cannot be written to.")
          .Bool("Removable", "Whether its medium can be taken out.")
          .Bool("Rotational", "Whether its medium turns, as that of a hard disk does.")
          .String("Model", "The model as the device tells it; empty when it does not.")
          .Strings("Parents", "The devices that it lies on; none for a disk.")
          .String("Filesystem",
                  "The type of what is written on it; empty where no device manager knows.")
          .String("Label", "The label of what is written on it.")
          .String("UUID", "The identifier of what is written on it.")
          .Strings("Mount Points", "The directories that it is mounted on.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const BlockDevice& device) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(device.name));
  result->SetField("Kind", SanitizedText(device.kind));
  result->SetField("Number", FormatDeviceNumber(device.number));
  result->SetField("Size", device.size / kMebibyte);
  result->SetField("Size Bytes", device.size);
  result->SetField("Sector Size", device.sectorSize);
  result->SetField("Read Only", device.isReadOnly);
  result->SetField("Removable", device.isRemovable);
  result->SetField("Rotational", device.isRotational);
  result->SetField("Model", SanitizedText(device.model));
  result->SetField("Parents", SanitizedList(device.parents));
  result->SetField("Filesystem", SanitizedText(device.filesystem));
  result->SetField("Label", SanitizedText(device.label));
  result->SetField("UUID", SanitizedText(device.uuid));
  result->SetField("Mount Points", SanitizedList(device.mountPoints));
  return result;
}

class StorageDeviceList final : public ListCommand {
 public:
  StorageDeviceList()
      : ListCommand("List the block devices: disks, parts and volumes.", Shape,
                    "The block devices by name, each disk ahead of its parts.") {
    ShowColumns("Name,Kind,Size,Read Only,Filesystem,Mount Points",
                {{"units:StorageDevice.Size", "MiB"}, {"wrap-last", "true"}});
    AddExample("", "List the devices that hold something");
    AddExample("--kind disk --removable false", "List the disks that are built in");
    AddExample("--device sda --device sda1", "List two devices by name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("device", CallSpec::StringList,
              "List the device of this name only, without /dev/ before it; %REGEX%.")
        .Short("d")
        .Matching("[a-zA-Z0-9][a-zA-Z0-9/._:+-]*")
        .AddTo(spec);
    Parameter("kind", CallSpec::StringList, "List devices of this kind only:%FULLENUM%")
        .Short("k")
        .OneOf({{"disk", "a whole disk"},
                {"part", "a part of a disk"},
                {"rom", "a drive for discs"},
                {"loop", "a file that serves as a device"},
                {"lvm", "a logical volume"},
                {"crypt", "an encrypted volume"},
                {"mpath", "a disk behind several paths"},
                {"dm", "another mapped volume"},
                {"raid0", "a striped array"},
                {"raid1", "a mirrored array"},
                {"raid4", "an array with one disk of parity"},
                {"raid5", "an array with spread parity"},
                {"raid6", "an array with double parity"},
                {"raid10", "a striped array of mirrors"},
                {"linear", "an array of disks in a row"}})
        .AddTo(spec);
    Parameter("minimum-size", CallSpec::Int, "List devices of at least this size in MiB; %ENUM%.")
        .Short("m")
        .Between(0, 1L << 40)
        .AddTo(spec);
    Parameter("read-only", CallSpec::Bool,
              "List devices that are read-only (true) or that are not (false).")
        .Short("r")
        .AddTo(spec);
    Parameter("removable", CallSpec::Bool,
              "List devices that are removable (true) or that are not (false).")
        .Short("R")
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List also devices that hold nothing.").Short("a").AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const StringFilter names(input, "device");
    const StringFilter kinds(input, "kind");
    const BoolFilter readOnly(input, "read-only");
    const BoolFilter removable(input, "removable");
    const bool isEverythingListed = input.IsFlagSet("all");
    const auto readProperties = [](dev_t device) { return ReadDeviceProperties(device); };
    for (const BlockDevice& device : ReadBlockDevices(kSys, readProperties, ReadMounts())) {
      if ((isEverythingListed || device.size > 0) && names.Accepts(device.name) &&
          kinds.Accepts(device.kind) && readOnly.Accepts(device.isReadOnly) &&
          removable.Accepts(device.isRemovable) &&
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

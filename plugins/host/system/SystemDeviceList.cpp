// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/Regex.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/system/BusDevices.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

constexpr char kShare[] = "/usr/share";
constexpr char kUnknown[] = "unknown";
constexpr char kNone[] = "none";
constexpr char kHexadecimal[] = "0123456789abcdef";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Device")
          .String("Bus", "The bus: `pci` or `usb`.")
          .String("Address", "The place on the bus, such as `0000:00:1f.2` or `1-1.4`.")
          .String("Vendor Id", "The number of the vendor: four hexadecimal digits.")
          .String("Device Id", "The vendor's number of the device: four hexadecimal digits.")
          .String("Class Id",
                  "Class, subclass and interface (USB: protocol): six hexadecimal digits.")
          .String("Class", "What it is; `unknown` if the class is in no list.")
          .String("Vendor",
                  "The name of the vendor; `unknown` if it is in no list of names and the device "
                  "does not report it.")
          .String("Device", "The name of the device; `unknown` in the same case.")
          .String("Name",
                  "Vendor and device in one, for people, with the number of what is unknown in its "
                  "place.")
          .String("Driver",
                  "The drivers that serve it, separated by commas; `none` without any. Those of a "
                  "USB device serve its interfaces.");
  return shape;
}

std::string ToDigits(std::uint32_t number, std::size_t count) {
  std::string digits(count, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, number >>= 4) {
    *digit = kHexadecimal[number & 0xf];
  }
  return digits;
}

std::shared_ptr<MetaObj::MetaString> TextOr(const std::string& text, const char* otherwise) {
  return SanitizedText(text.empty() ? otherwise : text);
}

std::string Join(const std::vector<std::string>& drivers) {
  std::string joined;
  for (const std::string& driver : drivers) {
    joined += (joined.empty() ? "" : ",") + driver;
  }
  return joined;
}

// Returns "Maker Model", "Maker 0d57", "8086:0d57 Model" or "8086:0d57".
std::string NameOf(const BusDevice& device) {
  const std::string number = ToDigits(device.deviceId, 4);
  if (device.vendor.empty()) {
    return ToDigits(device.vendorId, 4) + ":" + number +
           (device.device.empty() ? "" : " " + device.device);
  }
  return device.vendor + " " + (device.device.empty() ? number : device.device);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const BusDevice& device) {
  auto result = Shape().NewStruct();
  result->SetField("Bus", device.bus == Bus::Pci ? "pci" : "usb");
  result->SetField("Address", SanitizedText(device.address));
  result->SetField("Vendor Id", ToDigits(device.vendorId, 4));
  result->SetField("Device Id", ToDigits(device.deviceId, 4));
  result->SetField("Class Id", ToDigits(device.classId, 6));
  result->SetField("Class", TextOr(device.className, kUnknown));
  result->SetField("Vendor", TextOr(device.vendor, kUnknown));
  result->SetField("Device", TextOr(device.device, kUnknown));
  result->SetField("Name", SanitizedText(NameOf(device)));
  result->SetField("Driver", TextOr(Join(device.drivers), kNone));
  return result;
}

/// Selects the devices that the user asks for.
class DeviceFilter {
 public:
  explicit DeviceFilter(const CallSpec::Input& input)
      : drivers_(input, "driver"), hasDrivers_(input.HasParameter("driver")) {
    if (input.HasParameter("match")) {
      match_.emplace(input.GetParameter("match"));
    }
  }

  bool Accepts(const BusDevice& device) const {
    return AcceptsDrivers(device.drivers) &&
           (!match_ || match_->IsFoundIn(NameOf(device)) || match_->IsFoundIn(device.className));
  }

 private:
  bool AcceptsDrivers(const std::vector<std::string>& drivers) const {
    if (!hasDrivers_ || drivers.empty()) {
      return drivers_.Accepts(kNone) || !hasDrivers_;
    }
    return std::any_of(drivers.begin(), drivers.end(),
                       [this](const std::string& driver) { return drivers_.Accepts(driver); });
  }

  NameFilter drivers_;
  bool hasDrivers_;
  std::optional<Regex> match_;
};

class SystemDeviceList final : public ListCommand {
 public:
  SystemDeviceList()
      : ListCommand("List the devices on the buses PCI and USB.", Shape,
                    "The devices, those on PCI first, sorted by address.") {
    ShowColumns("Address,Driver,Class,Name", {{"wrap-last", "true"}});
    AddMetaData("complete:driver", "system.device.list Driver");
    AddExample("", "List all devices");
    AddExample("--bus usb", "List the devices on USB");
    AddExample("--driver none", "List the devices that no driver serves");
    AddExample("--match Ethernet", "List the devices with that word in the name or the class");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("bus", CallSpec::StringList, "List only the devices on one of these buses: %ENUM%.")
        .Short("b")
        .OneOf({{"pci", ""}, {"usb", ""}})
        .AddTo(spec);
    Parameter("driver", CallSpec::StringList,
              "List only devices served by a driver of one of these names, in which * stands for "
              "any text; `none` for those without a driver.")
        .Short("d")
        .AddTo(spec);
    Parameter("match", CallSpec::String,
              "List only devices whose name or class contains a match of this regular expression.")
        .Short("m")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const DeviceFilter filter(input);
    const StringFilter buses(input, "bus");
    if (buses.Accepts("pci")) {
      const HardwareNames names(ReadHardwareNames(kShare, "pci.ids"));
      AddAccepted(ReadPciDevices(kSys, names), filter, rows);
    }
    if (buses.Accepts("usb")) {
      const HardwareNames names(ReadHardwareNames(kShare, "usb.ids"));
      AddAccepted(ReadUsbDevices(kSys, names), filter, rows);
    }
  }

  static void AddAccepted(const std::vector<BusDevice>& devices, const DeviceFilter& filter,
                          MetaObj::MetaList& rows) {
    for (const BusDevice& device : devices) {
      if (filter.Accepts(device)) {
        rows.Add(ToStruct(device));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemDeviceList() {
  return std::make_shared<SystemDeviceList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>

#include <ctime>
#include <string>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TimeFormat.h"
#include "plugins/host/system/Clock.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

constexpr char kEtc[] = "/etc";
constexpr char kNone[] = "none";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SystemClock")
          .String("Time", "The time in the machine's zone.")
          .Int("Epoch Seconds", "The time in seconds since 1970 in UTC.")
          .String("Zone", "The name of the zone; `unknown` if it has none.")
          .String("Abbreviation", "The short name of the zone at that time, such as `CET`.")
          .String("Offset", "What the zone adds to UTC at that time, as in `+01:00`.")
          .Int("Offset Seconds", "The offset in seconds.")
          .Bool("Synchronized", "Whether the kernel's clock follows a reference.")
          .Int("Maximum Error Microseconds", "The greatest possible error of the clock.")
          .Int("Estimated Error Microseconds", "The estimated error of the clock.")
          .String("Hardware Clock",
                  "The clock that runs while the machine is off; `none` if there is none.")
          .String("Hardware Time", "What that clock shows; `none` without a clock.")
          .String(
              "Hardware Zone",
              "The zone of that time: `UTC`, or `local` for that of the machine; `none` without "
              "a clock.")
          .Int("Hardware Seconds",
               "What that clock shows, in seconds since 1970 in its zone; -1 without a clock.");
  return shape;
}

// Does not use time(2), which may still return the previous second.
std::time_t Now() {
  timespec now = {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec;
}

std::tm ToLocal(std::time_t time) {
  ::tzset();
  std::tm parts = {};
  if (::localtime_r(&time, &parts) == nullptr) {
    throw KestrelException("Unable to convert the time " + std::to_string(time));
  }
  return parts;
}

std::string FormatUtc(std::time_t time) {
  std::tm parts = {};
  char text[64] = "";
  if (::gmtime_r(&time, &parts) == nullptr) {
    return "unknown";
  }
  return std::string(text, std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts));
}

void SetTime(MetaObj::MetaStruct& result, std::time_t time) {
  const std::tm local = ToLocal(time);
  result.SetField("Time", FormatTimestamp(time));
  result.SetField("Epoch Seconds", static_cast<long>(time));
  result.SetField("Zone", SanitizedText(ReadZoneName(kEtc)));
  result.SetField("Abbreviation", SanitizedText(local.tm_zone));
  result.SetField("Offset", FormatOffset(local.tm_gmtoff));
  result.SetField("Offset Seconds", local.tm_gmtoff);
}

void SetDiscipline(MetaObj::MetaStruct& result, const ClockDiscipline& discipline) {
  result.SetField("Synchronized", discipline.isSynchronized);
  result.SetField("Maximum Error Microseconds", discipline.maximumError);
  result.SetField("Estimated Error Microseconds", discipline.estimatedError);
}

void SetHardware(MetaObj::MetaStruct& result, const std::optional<HardwareClock>& clock) {
  result.SetField("Hardware Clock", SanitizedText(clock ? clock->device : kNone));
  result.SetField("Hardware Time", clock ? FormatUtc(clock->seconds) : kNone);
  result.SetField("Hardware Zone", !clock ? kNone : clock->isLocalTime ? "local" : "UTC");
  result.SetField("Hardware Seconds", clock ? clock->seconds : -1L);
}

class SystemClockGet final : public HostCommand {
 public:
  SystemClockGet() : HostCommand("Show the time, its zone, and whether the clock is right.") {
    ShowAsLines("SystemClock",
                "Time,Zone,Offset,Synchronized,Maximum Error Microseconds,Hardware Clock,"
                "Hardware Time,Hardware Zone");
    AddExample("", "Show the time of this machine");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The clocks of the machine.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const auto result = Shape().NewStruct();
    SetTime(*result, Now());
    SetDiscipline(*result, ReadDiscipline());
    SetHardware(*result, ReadHardwareClock(kSys, kEtc));
    output.SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemClockGet() { return std::make_shared<SystemClockGet>(); }

}  // namespace Kestrel::Host

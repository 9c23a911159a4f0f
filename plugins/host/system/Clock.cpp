// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Clock.h"

#include <kestrel/KestrelException.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::string_view kZoneFolder = "/zoneinfo/";
constexpr long kMinute = 60;
constexpr long kHour = 60 * kMinute;

// Returns "Europe/Berlin" for a link to ".../zoneinfo/Europe/Berlin", a file of the time zone
// database.
std::string NameInLink(const std::string& target) {
  const std::size_t folder = target.rfind(kZoneFolder);
  return folder == std::string::npos ? std::string() : target.substr(folder + kZoneFolder.size());
}

// Returns the content of a file without white space at its ends; an empty string if there is no
// such file.
std::string ReadOptionalLine(const std::string& path) {
  const auto text = ReadOptionalFile(path);
  return text ? std::string(Trim(*text)) : std::string();
}

// The third line of the file is UTC or LOCAL.
bool ShowsLocalTime(const std::string& adjtime) {
  const auto text = ReadOptionalFile(adjtime);
  const auto lines = SplitLines(text ? *text : std::string_view());
  return lines.size() > 2 && Trim(lines[2]) == "LOCAL";
}

// The kernel marks the clock from which it took the time.
std::string ChooseClock(const std::string& folder) {
  const auto names = ListOptionalFolder(folder);
  if (!names) {
    return {};
  }
  std::string chosen;
  for (const std::string& name : *names) {
    if (ReadOptionalLine(folder + "/" + name + "/hctosys") == "1") {
      return name;
    }
    chosen = chosen.empty() ? name : chosen;
  }
  return chosen;
}

}  // namespace

ClockDiscipline ToDiscipline(int result, const struct timex& report) {
  ClockDiscipline discipline;
  discipline.isSynchronized = result != TIME_ERROR && (report.status & STA_UNSYNC) == 0;
  discipline.maximumError = report.maxerror;
  discipline.estimatedError = report.esterror;
  return discipline;
}

ClockDiscipline ReadDiscipline() {
  struct timex report = {};  // with no bit set in "modes", nothing is changed
  const int result = ::adjtimex(&report);
  if (result < 0) {
    throw KestrelException(std::string("Unable to read the state of the clock: ") +
                           std::strerror(errno));
  }
  return ToDiscipline(result, report);
}

std::string ReadZoneName(const std::string& etc) {
  const char* const variable = std::getenv("TZ");
  if (variable != nullptr) {
    const std::string name = *variable == ':' ? variable + 1 : variable;
    return name.empty() ? "UTC" : name;
  }
  const auto target = ReadLink(etc + "/localtime");
  if (target && !NameInLink(*target).empty()) {
    return NameInLink(*target);
  }
  const std::string name = ReadOptionalLine(etc + "/timezone");
  if (!name.empty()) {
    return name.substr(0, name.find('\n'));
  }
  return Exists(etc + "/localtime") ? "unknown" : "UTC";
}

std::optional<HardwareClock> ReadHardwareClock(const std::string& sys, const std::string& etc) {
  const std::string folder = sys + "/class/rtc";
  HardwareClock clock;
  clock.device = ChooseClock(folder);
  if (clock.device.empty()) {
    return std::nullopt;
  }
  const std::string path = folder + "/" + clock.device + "/since_epoch";
  const auto seconds = ParseNumber(ReadRequiredFile(path));
  if (!seconds) {
    throw KestrelException("Unable to understand " + path);
  }
  clock.seconds = *seconds;
  clock.isLocalTime = ShowsLocalTime(etc + "/adjtime");
  return clock;
}

std::string FormatOffset(long seconds) {
  const unsigned long size =
      seconds < 0 ? 0UL - static_cast<unsigned long>(seconds) : static_cast<unsigned long>(seconds);
  char text[64];
  std::snprintf(text, sizeof(text), "%c%02lu:%02lu", seconds < 0 ? '-' : '+', size / kHour,
                size % kHour / kMinute);
  std::string offset = text;
  if (size % kMinute != 0) {
    std::snprintf(text, sizeof(text), ":%02lu", size % kMinute);
    offset += text;
  }
  return offset;
}

}  // namespace Kestrel::Host

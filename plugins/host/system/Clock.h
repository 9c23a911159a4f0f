// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/timex.h>

#include <optional>
#include <string>

namespace Kestrel::Host {

/// How closely the kernel's clock follows a reference clock.
struct ClockDiscipline {
  bool isSynchronized = false;
  long maximumError = 0;    ///< In microseconds.
  long estimatedError = 0;  ///< In microseconds.
};

/// The clock that runs while the machine is off.
struct HardwareClock {
  std::string device;        ///< As in "rtc0".
  long seconds = 0;          ///< The time that it shows, as seconds since 1970.
  bool isLocalTime = false;  ///< Whether it shows the time of the machine's zone instead of UTC.
};

/// Converts the result of adjtimex(2) and the structure that it filled.
ClockDiscipline ToDiscipline(int result, const struct timex& report);

/// Queries the kernel. Throws KestrelException with the system's text if that fails.
ClockDiscipline ReadDiscipline();

/// Returns the name of the machine's time zone, such as "Europe/Berlin": the value of TZ without a
/// colon at its start, or "UTC" if that is empty; without TZ, the part after "/zoneinfo/" in the
/// target of the link "localtime" in the folder `etc`, otherwise the first line of "timezone"
/// there. If none of them names a zone, the name is "unknown" if "localtime" exists, otherwise
/// "UTC".
std::string ReadZoneName(const std::string& etc);

/// Returns the clock from which the kernel took the time, otherwise the first clock below
/// "class/rtc" in `sys`; nothing if the machine has none. The file "adjtime" in `etc` says whether
/// the clock shows local time; without the file, it shows UTC. Throws KestrelException if the clock
/// or the file cannot be read.
std::optional<HardwareClock> ReadHardwareClock(const std::string& sys, const std::string& etc);

/// Formats an offset from UTC, as in "+05:30"; with seconds if they are not 0.
std::string FormatOffset(long seconds);

}  // namespace Kestrel::Host

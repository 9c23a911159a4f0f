// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/timex.h>

#include <optional>
#include <string>

namespace Kestrel::Host {

/// How well the kernel's clock follows a reference.
struct ClockDiscipline {
  bool isSynchronized = false;
  long maximumError = 0;    ///< In microseconds.
  long estimatedError = 0;  ///< In microseconds.
};

/// The clock that runs while the machine is off.
struct HardwareClock {
  std::string device;        ///< Such as "rtc0".
  long seconds = 0;          ///< What it shows, as seconds since 1970.
  bool isLocalTime = false;  ///< Whether it shows the time of the machine's zone instead of UTC.
};

/// Returns what adjtimex(2) reports: its result and the structure that it filled.
ClockDiscipline ToDiscipline(int result, const struct timex& report);

/// Asks the kernel. Throws KestrelException with the system's text.
ClockDiscipline ReadDiscipline();

/// Returns the name of the machine's time zone, such as "Europe/Berlin": the value of TZ, else the
/// target of "localtime" in the folder `etc`, else the first line of "timezone" there. Without any
/// of them it is "UTC"; if "localtime" is there and its zone has no name, it is "unknown".
std::string ReadZoneName(const std::string& etc);

/// Returns the clock from which the kernel took the time, else the first one below "class/rtc" in
/// `sys`; nothing if the machine has none. `etc` has the file "adjtime". Throws KestrelException if
/// there is one that cannot be read.
std::optional<HardwareClock> ReadHardwareClock(const std::string& sys, const std::string& etc);

/// Formats an offset from UTC, as in "+05:30"; with seconds if it has any.
std::string FormatOffset(long seconds);

}  // namespace Kestrel::Host

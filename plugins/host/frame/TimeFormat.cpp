// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/TimeFormat.h"

#include <cstdio>

namespace Kestrel::Host {
namespace {

constexpr long kMinute = 60;
constexpr long kHour = 60 * kMinute;
constexpr long kDay = 24 * kHour;

}  // namespace

std::string FormatTimestamp(std::time_t time) {
  std::tm parts = {};
  if (::localtime_r(&time, &parts) == nullptr) {
    return "unknown";
  }
  char text[64];
  return std::string(text, std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts));
}

std::string FormatDuration(long seconds) {
  const long duration = seconds < 0 ? 0 : seconds;
  char text[64];
  std::snprintf(text, sizeof(text), "%02ld:%02ld:%02ld", duration % kDay / kHour,
                duration % kHour / kMinute, duration % kMinute);
  return duration < kDay ? text : std::to_string(duration / kDay) + "-" + text;
}

}  // namespace Kestrel::Host

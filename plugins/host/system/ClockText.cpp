// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/ClockText.h"

#include <cstdio>

namespace Kestrel::Host {
namespace {

constexpr long kMinute = 60;
constexpr long kHour = 60 * kMinute;
constexpr long kDay = 24 * kHour;

}  // namespace

std::string MomentText(std::time_t moment) {
  std::tm parts = {};
  if (::localtime_r(&moment, &parts) == nullptr) {
    return {};
  }
  char text[64];
  return std::string(text, std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts));
}

std::string SpanText(long seconds) {
  const long span = seconds < 0 ? 0 : seconds;
  char text[64];
  std::snprintf(text, sizeof(text), "%02ld:%02ld:%02ld", span % kDay / kHour,
                span % kHour / kMinute, span % kMinute);
  return span < kDay ? text : std::to_string(span / kDay) + "-" + text;
}

}  // namespace Kestrel::Host

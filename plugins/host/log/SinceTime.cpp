// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/SinceTime.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "plugins/host/log/WrittenTime.h"

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;
constexpr std::int64_t kWeek = 7 * kDay;
// No log goes back that far. With larger numbers, a multiplication could overflow.
constexpr std::int64_t kMaxCount = 1000000000;

struct Unit {
  std::string_view name;
  std::int64_t seconds;
};

constexpr Unit kUnits[] = {
    {"s", 1},         {"sec", 1},          {"second", 1},        {"seconds", 1}, {"m", kMinute},
    {"min", kMinute}, {"minute", kMinute}, {"minutes", kMinute}, {"h", kHour},   {"hour", kHour},
    {"hours", kHour}, {"d", kDay},         {"day", kDay},        {"days", kDay}, {"w", kWeek},
    {"week", kWeek},  {"weeks", kWeek}};

std::string InLowerCase(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) {
    if (letter >= 'A' && letter <= 'Z') {
      letter = static_cast<char>(letter - 'A' + 'a');
    }
  }
  return lower;
}

std::int64_t Midnight(const LocalZone& zone, CivilTime time) {
  time.hour = time.minute = time.second = 0;
  return zone.ToSeconds(time, LocalZone::Repeated::Earlier);
}

// A day is not always 24 hours long, but 24 hours before noon is always within the day before.
std::int64_t MidnightBefore(const LocalZone& zone, CivilTime time) {
  time.hour = 12;
  const std::int64_t noon = zone.ToSeconds(time, LocalZone::Repeated::Earlier);
  return Midnight(zone, zone.ToCivil(noon - kDay));
}

// Parses a span such as "-2h" or "-30 minutes", and returns its length in seconds.
std::optional<std::int64_t> ParseSpanBack(std::string_view text) {
  if (text.empty() || text[0] != '-') {
    return std::nullopt;
  }
  std::int64_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data() + 1, end, count);
  if (error != std::errc() || count < 0 || count > kMaxCount) {
    return std::nullopt;
  }
  std::string_view name(rest, static_cast<std::size_t>(end - rest));
  name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
  const auto* const unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                        [&](const Unit& each) { return each.name == name; });
  return unit == std::end(kUnits) ? std::nullopt : std::make_optional(count * unit->seconds);
}

std::optional<std::int64_t> ParseDate(std::string_view text, const LocalZone& zone) {
  const auto written = TakeIsoTime(text);
  if (!written || !text.empty()) {
    return std::nullopt;
  }
  return written->offset ? UtcSeconds(written->time) - *written->offset
                         : zone.ToSeconds(written->time, LocalZone::Repeated::Earlier);
}

}  // namespace

const char* const kSinceForms =
    "today, yesterday, now, -90s, -30m, -2h, -7d, -2w, 2026-11-01 or \"2026-11-01 10:00\"";

std::optional<std::int64_t> ParseSince(std::string_view text, const LocalZone& zone,
                                       std::int64_t now) {
  const std::string word = InLowerCase(text);
  if (word == "now") {
    return now;
  }
  if (word == "today") {
    return Midnight(zone, zone.ToCivil(now));
  }
  if (word == "yesterday") {
    return MidnightBefore(zone, zone.ToCivil(now));
  }
  if (const auto span = ParseSpanBack(word)) {
    return now - *span;
  }
  return ParseDate(text, zone);
}

}  // namespace Kestrel::Host

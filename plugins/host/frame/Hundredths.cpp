// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Hundredths.h"

#include <cstdint>
#include <cstdio>

#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::uint64_t kWhole = 100;

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

std::string FormatHundredths(long hundredths) {
  const bool isNegative = hundredths < 0;
  const std::uint64_t size =
      isNegative ? -static_cast<std::uint64_t>(hundredths) : static_cast<std::uint64_t>(hundredths);
  char text[32];
  std::snprintf(text, sizeof(text), "%s%llu.%02llu", isNegative ? "-" : "",
                static_cast<unsigned long long>(size / kWhole),
                static_cast<unsigned long long>(size % kWhole));
  return text;
}

std::optional<long> ParseHundredths(std::string_view text) {
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction = point == std::string_view::npos ? "0" : text.substr(point + 1);
  if (!IsDigits(whole) || !IsDigits(fraction)) {
    return std::nullopt;
  }
  // The number of hundredths: the whole digits, then two digits of the fraction.
  std::string digits(whole);
  digits += fraction.substr(0, 2);
  digits.resize(whole.size() + 2, '0');
  return ParseNumber(digits);
}

}  // namespace Kestrel::Host

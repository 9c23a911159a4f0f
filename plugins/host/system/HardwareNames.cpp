// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/HardwareNames.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kIdDigits = 4;
constexpr std::size_t kClassDigits = 2;
constexpr std::string_view kClassPrefix = "C ";

struct Numbered {
  unsigned long number = 0;
  std::string_view name;
};

// Parses a line with a number of exactly `digits` hexadecimal digits, a space, and the name.
std::optional<Numbered> ParseNumbered(std::string_view line, std::size_t digits) {
  if (line.size() <= digits || line[digits] != ' ') {
    return std::nullopt;
  }
  Numbered numbered;
  const auto [end, error] = std::from_chars(line.data(), line.data() + digits, numbered.number, 16);
  if (error != std::errc() || end != line.data() + digits) {
    return std::nullopt;
  }
  numbered.name = Trim(line.substr(digits));
  return numbered;
}

// Returns the line at `position`, and moves `position` past it.
std::string_view NextLine(std::string_view text, std::size_t& position) {
  const std::size_t end = std::min(text.find('\n', position), text.size());
  const std::string_view line = text.substr(position, end - position);
  position = std::min(end + 1, text.size());
  return line;
}

}  // namespace

HardwareNames::HardwareNames(std::string text) : text_(std::move(text)) {
  std::size_t position = 0;
  while (position < text_.size()) {
    const std::string_view line = NextLine(text_, position);
    if (!line.empty() && line.front() != '\t' && line.front() != '#') {
      AddEntry(line, position);
    }
  }
}

std::string HardwareNames::FindVendor(std::uint16_t vendor) const {
  const auto found = vendors_.find(vendor);
  return found == vendors_.end() ? std::string() : std::string(found->second.name);
}

std::string HardwareNames::FindDevice(std::uint16_t vendor, std::uint16_t device) const {
  const auto found = vendors_.find(vendor);
  return found == vendors_.end() ? std::string() : FindBelow(found->second, kIdDigits, device);
}

std::string HardwareNames::FindClass(std::uint8_t deviceClass) const {
  const auto found = classes_.find(deviceClass);
  return found == classes_.end() ? std::string() : std::string(found->second.name);
}

std::string HardwareNames::FindSubclass(std::uint8_t deviceClass, std::uint8_t subclass) const {
  const auto found = classes_.find(deviceClass);
  return found == classes_.end() ? std::string() : FindBelow(found->second, kClassDigits, subclass);
}

void HardwareNames::AddEntry(std::string_view line, std::size_t below) {
  const bool isClass = StartsWith(line, kClassPrefix);
  const auto numbered = isClass ? ParseNumbered(line.substr(kClassPrefix.size()), kClassDigits)
                                : ParseNumbered(line, kIdDigits);
  if (numbered) {
    (isClass ? classes_ : vendors_).emplace(numbered->number, Entry{numbered->name, below});
  }
}

std::string HardwareNames::FindBelow(const Entry& entry, std::size_t digits,
                                     unsigned long number) const {
  std::size_t position = entry.below;
  while (position < text_.size()) {
    const std::string_view line = NextLine(text_, position);
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (line.front() != '\t') {
      break;
    }
    const auto numbered = ParseNumbered(line.substr(1), digits);
    if (numbered && numbered->number == number) {
      return std::string(numbered->name);
    }
  }
  return {};
}

std::string ReadHardwareNames(const std::string& share, const std::string& file) {
  for (const char* const folder : {"/misc/", "/hwdata/"}) {
    auto text = ReadOptionalFile(share + folder + file);
    if (text) {
      return std::move(*text);
    }
  }
  return {};
}

}  // namespace Kestrel::Host

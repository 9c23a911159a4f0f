// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceName.h"

#include <algorithm>

namespace Kestrel::Host {
namespace {

constexpr std::string_view kEnding = ".service";
// systemd's limit for the name of a unit.
constexpr std::size_t kMaxUnitSize = 255;

bool HasEnding(std::string_view unit) {
  return unit.size() >= kEnding.size() && unit.substr(unit.size() - kEnding.size()) == kEnding;
}

bool IsNameCharacter(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= '0' && letter <= '9') ||
         std::string_view(":-_.\\@").find(letter) != std::string_view::npos;
}

}  // namespace

std::string ServiceName(std::string_view unit) {
  if (HasEnding(unit)) {
    unit.remove_suffix(kEnding.size());
  }
  return std::string(unit);
}

std::string ServiceUnit(std::string_view name) { return ServiceName(name).append(kEnding); }

bool IsServiceName(std::string_view name) {
  const std::string unit = ServiceUnit(name);
  return unit.size() > kEnding.size() && unit.size() <= kMaxUnitSize &&
         std::all_of(unit.begin(), unit.end(), IsNameCharacter);
}

}  // namespace Kestrel::Host

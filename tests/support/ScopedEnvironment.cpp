// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/ScopedEnvironment.h"

#include <stdlib.h>

namespace Kestrel::Testing {

namespace {

std::optional<std::string> Get(const std::string& name) {
  const char* value = getenv(name.c_str());
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void Set(const std::string& name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name.c_str(), value->c_str(), 1);
  } else {
    unsetenv(name.c_str());
  }
}

}  // namespace

ScopedEnvironment::ScopedEnvironment(const std::string& name,
                                     const std::optional<std::string>& value)
    : name_(name), previous_(Get(name)) {
  Set(name_, value);
}

ScopedEnvironment::~ScopedEnvironment() { Set(name_, previous_); }

}  // namespace Kestrel::Testing

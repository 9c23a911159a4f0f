// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Kestrel::Testing {

/// Sets or unsets an environment variable of this process for as long as the object lives.
class ScopedEnvironment {
 public:
  /// Without a value the variable is unset.
  ScopedEnvironment(const std::string& name, const std::optional<std::string>& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string name_;
  std::optional<std::string> previous_;
};

}  // namespace Kestrel::Testing

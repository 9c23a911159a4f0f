// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Kestrel::Testing {

/// Gives an environment variable of this process another value, or none, for as long as it lives.
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

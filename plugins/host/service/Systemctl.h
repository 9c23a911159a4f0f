// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/frame/ChildProcess.h"

namespace Kestrel::Host {

/// Joins the non-empty lines of `text` with spaces.
std::string OnOneLine(std::string_view text);

/// Returns why a program failed, on one line and safe to print: that it took too long, otherwise
/// the lines of its standard error, up to a limit, or its exit status if there are none.
std::string FailureWords(const ProgramResult& result);

/// The program systemctl, found in PATH, which queries systemd.
class Systemctl {
 public:
  /// How long a query may take. Changes have limits of their own.
  static constexpr std::chrono::seconds kAnswerLimit{30};

  /// Throws KestrelException if there is no such program.
  explicit Systemctl(std::chrono::milliseconds limit = kAnswerLimit);

  /// Returns what systemctl prints for these arguments. Throws KestrelException with its message if
  /// it fails, and also if it takes too long.
  std::string Ask(const std::vector<std::string>& arguments) const;

  /// Changes a unit with "start", "stop" and so on. Never prompts for a password.
  ProgramResult Change(const std::string& action, const std::string& unit,
                       std::chrono::milliseconds limit) const;

 private:
  std::string path_;
  std::chrono::milliseconds limit_;
};

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/frame/ChildProcess.h"

namespace Kestrel::Host {

/// The lines of `text`, without those that are empty, joined by spaces.
std::string OnOneLine(std::string_view text);

/// What a program says about its failure, on one line and safe to show: all lines of its standard
/// error, else its status.
std::string FailureWords(const ProgramResult& result);

/// The program systemctl as found in PATH, by which systemd is asked.
class Systemctl {
 public:
  /// How long an answer may take; changes take as long as they need, up to a limit of their own.
  static constexpr std::chrono::seconds kAnswerLimit{30};

  /// Throws KestrelException when there is no such program.
  explicit Systemctl(std::chrono::milliseconds limit = kAnswerLimit);

  /// What it prints for these arguments. Throws KestrelException with its words when it fails, and
  /// when it takes too long.
  std::string Ask(const std::vector<std::string>& arguments) const;

  /// Makes it change a unit: "start", "stop" and so on. It never asks for a password.
  ProgramResult Change(const std::string& action, const std::string& unit,
                       std::chrono::milliseconds limit) const;

 private:
  std::string path_;
  std::chrono::milliseconds limit_;
};

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/Output.h>

#include <optional>
#include <string>

#include "plugins/host/frame/Regex.h"
#include "plugins/host/log/LocalZone.h"
#include "plugins/host/log/LogLines.h"

namespace Kestrel::Host {

/// Adds "since", "level", "match" and "lines", which select lines of any log.
void AddLogParameters(CallSpec::InputSpec& spec);

/// The selection of lines that the parameters of AddLogParameters make.
class LogChoice {
 public:
  /// Adds an error message to `output` for each value that is not a valid time, level or regular
  /// expression.
  LogChoice(const CallSpec::Input& input, const LocalZone& zone, CallSpec::Output& output);
  LogChoice(const LogChoice&) = delete;
  LogChoice& operator=(const LogChoice&) = delete;

  const LogFilter& GetFilter() const { return filter_; }

 private:
  void ReadSince(const std::string& text, const LocalZone& zone, CallSpec::Output& output);
  void ReadLevel(const std::string& text, CallSpec::Output& output);
  void ReadMatch(const std::string& text, CallSpec::Output& output);

  std::optional<Regex> match_;
  LogFilter filter_;
};

}  // namespace Kestrel::Host

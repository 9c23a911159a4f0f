// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/Output.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/frame/Regex.h"
#include "plugins/host/service/Service.h"

namespace Kestrel::Host {

/// Adds "name", the name of one service.
void AddServiceName(CallSpec::InputSpec& spec);

/// The units that the user selects by "name" and "match".
class UnitNames {
 public:
  /// `what` is the word for the units in the help.
  static void DeclareParameters(CallSpec::InputSpec& spec, const char* what);

  /// `ending` is the ending of the units' names, such as ".service"; the user may omit it. Throws
  /// KestrelException if the regular expression is invalid.
  UnitNames(const CallSpec::Input& input, std::string_view ending);

  /// Whether a unit is selected. `name` is without the ending.
  bool Accept(const std::string& name) const;

 private:
  std::vector<std::string> patterns_;
  std::optional<Regex> match_;
};

/// The states that the user lists in "state", in upper or lower case.
class ServiceStates {
 public:
  static void DeclareParameter(CallSpec::InputSpec& spec);

  /// Adds an error message to `output` for each word that is not a state.
  ServiceStates(const CallSpec::Input& input, CallSpec::Output& output);

  bool Accept(std::string_view state) const;

 private:
  std::vector<std::string> states_;
};

/// Returns `text`, or `word` if it is empty.
std::string TextOr(const char* word, const std::string& text);

}  // namespace Kestrel::Host

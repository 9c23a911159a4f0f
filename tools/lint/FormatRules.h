// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Lint {

/// The default format that a command declares, and the shape of its result.
struct FormatDeclaration {
  std::string formatter;
  std::vector<std::pair<std::string, std::string>> parameters;
  std::shared_ptr<MetaObj::MetaObject> root;  // null when nothing is declared
};

/// A mistake in a default format.
struct FormatFault {
  const char* rule;
  /// The index of the parameter with the mistake; nothing if the mistake is in the formatter.
  std::optional<std::size_t> parameter;
  std::string what;
  std::string advice;
};

/// Returns the mistakes in a default format. `others` are formatters that exist although the
/// dispatcher does not have them.
std::vector<FormatFault> FindFormatFaults(const FormatDeclaration& declaration,
                                          const AutoCli::Dispatcher& dispatcher,
                                          const std::set<std::string>& others);

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/complete/Completion.h"
#include "tools/complete/CursorLine.h"
#include "tools/complete/DataValues.h"

namespace Kestrel::Complete {

/// The data needed to complete a value.
struct ValueContext {
  const AutoCli::Dispatcher& dispatcher;
  const CursorLine& line;
  /// The command on the line; null if it names none, or none yet.
  std::shared_ptr<AutoCli::CommandSpec> command;
  Deadline deadline;
};

/// Adds the values of a parameter of the command: the words for booleans, those that its constraint
/// enumerates, and those from the source in the command's meta-data `complete:PARAMETER`. Adds none
/// for a secret.
void AddParameterValues(const ValueContext& context, const CallSpec::ParameterSpec& parameter,
                        Completion& completion);

/// Adds the values of an option of the dispatcher.
void AddDispatcherValues(const ValueContext& context, const std::string& option,
                         Completion& completion);

}  // namespace Kestrel::Complete

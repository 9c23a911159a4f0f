// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plugins/support/CommandCall.h"

namespace Kestrel::Testing {

/// The rows with those fields alone.
std::vector<Row> OnlyFields(const std::vector<Row>& rows, const std::vector<std::string>& fields);

/// The rows that a filter lets pass.
std::vector<Row> Filter(const std::vector<Row>& rows,
                        const std::function<bool(const Row&)>& filter);

/// Text as the commands show it: control characters as \xHH.
std::string Shown(const std::string& text);

/// The texts with ", " between them, as a list is shown.
std::string Joined(const std::vector<std::string>& texts);

/// The parts of a text between commas, in order.
std::vector<std::string> Sorted(std::vector<std::string> texts);

/// What the command and the witness say at a moment when the witness did not change: it is asked
/// before and after. Fails the test when that moment does not come.
struct Agreement {
  std::vector<Row> command;
  std::vector<Row> witness;
};
Agreement Compare(const std::function<std::vector<Row>()>& command,
                  const std::function<std::vector<Row>()>& witness);

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plugins/support/CommandCall.h"

namespace Kestrel::Testing {

/// Returns the rows without their other fields.
std::vector<Row> OnlyFields(const std::vector<Row>& rows, const std::vector<std::string>& fields);

/// Returns the rows that a filter accepts.
std::vector<Row> Filter(const std::vector<Row>& rows,
                        const std::function<bool(const Row&)>& filter);

/// Replaces ASCII control characters with \xHH, as the commands do.
std::string Shown(const std::string& text);

/// Joins strings with ", ", as lists are printed.
std::string Joined(const std::vector<std::string>& texts);

/// Sorts strings.
std::vector<std::string> Sorted(std::vector<std::string> texts);

/// The results of a command and of a witness.
struct Agreement {
  std::vector<Row> command;
  std::vector<Row> witness;
};
/// Runs the witness before and after the command, and repeats this until both runs of the witness
/// have the same result. Returns this result and that of the command. Fails the test if the results
/// of the witness differ in each of 20 attempts.
Agreement Compare(const std::function<std::vector<Row>()>& command,
                  const std::function<std::vector<Row>()>& witness);

}  // namespace Kestrel::Testing

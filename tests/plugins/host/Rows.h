// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "plugins/host/HostCall.h"

namespace Kestrel::Testing {

/// A record with its values as text.
using Row = std::map<std::string, std::string>;

/// A record's values as text.
Row ToRow(const MetaObj::MetaStruct& record);

/// The records that a command lists; the call must succeed.
std::vector<Row> CallRows(const std::string& path, const Parameters& parameters = {});

/// The values that the listed records have in a field.
std::vector<std::string> CallColumn(const std::string& path, const std::string& field,
                                    const Parameters& parameters = {});

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

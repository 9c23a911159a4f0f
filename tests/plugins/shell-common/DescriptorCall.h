// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Testing {

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// A record with its values as text.
using Row = std::map<std::string, std::string>;

/// What one call of a command gave.
struct DescriptorResult {
  std::shared_ptr<MetaObj::MetaObject> value;
  std::vector<std::string> errors;
};

/// Calls a command of the shipped descriptors, as they stand in the build tree, in a dispatcher of
/// this process. `path` has blanks between its words.
DescriptorResult Call(const std::string& path, const Parameters& parameters = {});

/// The messages of a call that must not give a value.
std::vector<std::string> CallErrors(const std::string& path, const Parameters& parameters = {});

/// The text of a call that must succeed.
std::string CallText(const std::string& path, const Parameters& parameters = {});

/// The record of a call that must succeed.
Row CallRecord(const std::string& path, const Parameters& parameters = {});

/// The records that a call lists, which must succeed.
std::vector<Row> CallRows(const std::string& path, const Parameters& parameters = {});

/// The values that the listed records have in a field.
std::vector<std::string> CallColumn(const std::string& path, const std::string& field,
                                    const Parameters& parameters = {});

/// A value's records, or none with a failed test when it is no list of records.
std::vector<Row> ToRows(const std::shared_ptr<MetaObj::MetaObject>& value);

/// The path of a script of the build tree.
std::string ScriptPath(const std::string& name);

}  // namespace Kestrel::Testing

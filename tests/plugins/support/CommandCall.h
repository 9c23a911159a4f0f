// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

// Calls of commands in a dispatcher of the test program itself.
namespace Kestrel::Testing {

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// The fields of a structure with their values as text.
using Row = std::map<std::string, std::string>;

/// The dispatcher with the plug-ins under test. Each test program defines it.
AutoCli::Dispatcher& GetDispatcher();

/// What one call returned.
struct CommandResult {
  std::shared_ptr<AutoCli::CommandInput> input;
  std::shared_ptr<AutoCli::CommandOutput> output;

  const std::vector<std::string>& GetErrors() const { return output->GetErrors(); }
  std::shared_ptr<MetaObj::MetaObject> GetValue() const { return output->GetRootObject(); }
  /// Null when the value is no structure.
  std::shared_ptr<MetaObj::MetaStruct> GetStruct() const;
  /// Null when the value is no list.
  std::shared_ptr<MetaObj::MetaList> GetList() const;
  /// The structures in a list; fails the test when the value is no list.
  std::vector<std::shared_ptr<MetaObj::MetaStruct>> GetStructs() const;
};

/// Calls a command; `path` has spaces between its words.
CommandResult Call(const std::string& path, const Parameters& parameters = {});

/// The messages of a call that must not return a value.
std::vector<std::string> CallErrors(const std::string& path, const Parameters& parameters = {});

// Each of the following fails the test when the call reports an error.

/// The value as text.
std::string CallText(const std::string& path, const Parameters& parameters = {});
/// The fields of the structure.
Row CallStruct(const std::string& path, const Parameters& parameters = {});
/// The structures of the list.
std::vector<Row> CallRows(const std::string& path, const Parameters& parameters = {});
/// One field of each structure of the list.
std::vector<std::string> CallColumn(const std::string& path, const std::string& field,
                                    const Parameters& parameters = {});

Row ToRow(const MetaObj::MetaStruct& structure);

/// The structures in a list; fails the test when `value` is no list of structures.
std::vector<Row> ToRows(const std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::Testing

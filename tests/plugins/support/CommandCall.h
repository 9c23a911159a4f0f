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

// Functions that call commands in a dispatcher of the test program.
namespace Kestrel::Testing {

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// The fields of a structure as strings.
using Row = std::map<std::string, std::string>;

/// Returns the dispatcher with the plug-ins under test. Each test program defines this function.
AutoCli::Dispatcher& GetDispatcher();

/// The result of a call.
struct CommandResult {
  std::shared_ptr<AutoCli::CommandInput> input;
  std::shared_ptr<AutoCli::CommandOutput> output;

  const std::vector<std::string>& GetErrors() const { return output->GetErrors(); }
  std::shared_ptr<MetaObj::MetaObject> GetValue() const { return output->GetRootObject(); }
  /// Returns the value, or null if it is not a structure.
  std::shared_ptr<MetaObj::MetaStruct> GetStruct() const;
  /// Returns the value, or null if it is not a list.
  std::shared_ptr<MetaObj::MetaList> GetList() const;
  /// Returns the structures in the list. Fails the test if there are errors, or if the value is not
  /// a list of structures.
  std::vector<std::shared_ptr<MetaObj::MetaStruct>> GetStructs() const;
};

/// Calls a command. The words of `path` are separated by spaces.
CommandResult Call(const std::string& path, const Parameters& parameters = {});

/// Returns the errors of a call. Fails the test if there is a value.
std::vector<std::string> CallErrors(const std::string& path, const Parameters& parameters = {});

// Each of the following four functions calls a command, and fails the test if the call reports an
// error.

/// Returns the value as a string.
std::string CallText(const std::string& path, const Parameters& parameters = {});
/// Returns the fields of the structure.
Row CallStruct(const std::string& path, const Parameters& parameters = {});
/// Returns the structures of the list.
std::vector<Row> CallRows(const std::string& path, const Parameters& parameters = {});
/// Returns one field of each structure in the list.
std::vector<std::string> CallColumn(const std::string& path, const std::string& field,
                                    const Parameters& parameters = {});

Row ToRow(const MetaObj::MetaStruct& structure);

/// Returns the structures in a list. Fails the test if `value` is not a list of structures.
std::vector<Row> ToRows(const std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::Testing

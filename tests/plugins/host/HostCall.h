// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {

/// What one call of a command of the plug-in gave.
struct HostResult {
  std::shared_ptr<AutoCli::CommandInput> input;
  std::shared_ptr<AutoCli::CommandOutput> output;

  const std::vector<std::string>& GetErrors() const { return output->GetErrors(); }
  std::shared_ptr<MetaObj::MetaStruct> GetRecord() const;
  std::shared_ptr<MetaObj::MetaList> GetList() const;
  /// The records of a list.
  std::vector<std::shared_ptr<MetaObj::MetaStruct>> GetRecords() const;
};

using Parameters = std::vector<std::pair<std::string, std::string>>;

/// Calls a command of the plug-in in a dispatcher of this process. `path` has blanks between its
/// words.
HostResult CallHost(const std::string& path, const Parameters& parameters = {});

/// The same, and prints the result as it is by default, on a screen of that width.
std::string PrintHost(const std::string& path, const Parameters& parameters, unsigned short width);

/// The dispatcher with the plug-in that the calls go to; it lives as long as the program.
AutoCli::Dispatcher& GetHostDispatcher();

/// The text or number of a field as a text; fails the test when there is no such field.
std::string TextOf(const std::shared_ptr<MetaObj::MetaStruct>& record, const std::string& field);
/// The same of many records.
std::vector<std::string> FieldOf(const std::vector<std::shared_ptr<MetaObj::MetaStruct>>& records,
                                 const std::string& field);
/// A number; fails the test when the field is none.
long NumberOf(const std::shared_ptr<MetaObj::MetaStruct>& record, const std::string& field);

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/vexil/ColumnNames.h"

#include <kestrel/autocli/FormatParameters.h>

#include <algorithm>
#include <cstddef>

namespace Kestrel::Vexil {

using Catalog::Command;
using Catalog::Field;

namespace {

/// Returns the format parameters that choose fields. The first one that is set is used.
std::vector<std::string> KeysOf(const Command& command) {
  const std::string typed = "fields:" + command.result.typeName;
  if (command.formatter == "table") {
    return {typed, "fields", "table-columns"};
  }
  return command.formatter == "simple" ? std::vector<std::string>{typed, "fields"}
                                       : std::vector<std::string>();
}

std::string Trimmed(const std::string& name) {
  constexpr const char* kSpaces = " \t\f\v\n\r";
  const std::size_t begin = name.find_first_not_of(kSpaces);
  return begin == std::string::npos
             ? std::string()
             : name.substr(begin, name.find_last_not_of(kSpaces) - begin + 1);
}

/// Splits a list in the same way as the formatter: `simple` keeps white space around names.
std::vector<std::string> SplitNames(const std::string& list, const std::string& formatter) {
  AutoCli::FormatParameters parameters;
  parameters.SetParameter("fields", list);
  std::vector<std::string> names = parameters.GetParameterAsList("fields");
  if (formatter != "simple") {
    std::transform(names.begin(), names.end(), names.begin(), Trimmed);
  }
  return names;
}

/// Whether `field` is inside the structure or structures of `outer`, which precedes it.
bool IsWithin(const Field& field, const Field& outer) {
  return outer.kind.type == MetaObj::MetaType::Struct &&
         field.path.compare(0, outer.path.size() + 1, outer.path + ".") == 0;
}

/// Returns the fields of the result itself, without the fields inside them.
std::vector<std::string> OwnFields(const std::vector<Field>& fields) {
  std::vector<std::string> names;
  const Field* last = nullptr;
  for (const Field& field : fields) {
    if (last == nullptr || !IsWithin(field, *last)) {
      names.push_back(field.path);
      last = &field;
    }
  }
  return names;
}

}  // namespace

std::vector<std::string> ColumnNames(const Command& command) {
  if (command.formatter.empty() || command.result.fields.empty()) {
    return {};
  }
  for (const std::string& key : KeysOf(command)) {
    const auto found = command.formatParameters.find(key);
    if (found != command.formatParameters.end()) {
      return SplitNames(found->second, command.formatter);
    }
  }
  return OwnFields(command.result.fields);
}

}  // namespace Kestrel::Vexil

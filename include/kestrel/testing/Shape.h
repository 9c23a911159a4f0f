// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "kestrel/testing/TestTool.h"
#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// The structures in a declared result, by type name.
using Structures = std::map<std::string, std::shared_ptr<const MetaObj::MetaStruct>>;

/// Adds the structures in a value, at every depth.
inline void AddStructures(const std::shared_ptr<MetaObj::MetaObject>& value, Structures& found) {
  if (const auto structure = std::dynamic_pointer_cast<MetaObj::MetaStruct>(value)) {
    found[structure->GetTypeName()] = structure;
    for (const std::string& field : structure->GetFieldNames()) {
      AddStructures(structure->GetField(field), found);
    }
  } else if (const auto list = std::dynamic_pointer_cast<MetaObj::MetaList>(value)) {
    AddStructures(list->GetListStructure(), found);
  }
}

/// Whether a formatter finds the field of `structure` that is called `name` in its format parameter
/// `fields`. The formatter `simple` takes the name as it is. For the others, spaces around it do
/// not count, and it may be a path of names through nested structures, separated by ".".
inline bool FindsField(const std::string& formatter, const MetaObj::MetaStruct& structure,
                       std::string name) {
  if (formatter == "simple") {
    return structure.HasField(name);
  }
  constexpr const char* kSpaces = " \t\f\v\n\r";
  name.erase(name.find_last_not_of(kSpaces) + 1);
  name.erase(0, name.find_first_not_of(kSpaces));
  const MetaObj::MetaStruct* current = &structure;
  for (std::size_t end = name.find('.'); end != std::string::npos; end = name.find('.')) {
    current = dynamic_cast<const MetaObj::MetaStruct*>(current->FindField(name.substr(0, end)));
    if (current == nullptr) {
      return false;
    }
    name.erase(0, end + 1);
  }
  return current->HasField(name);
}

/// Checks that the format parameters `fields` and `fields:TYPE` of a command name only fields of
/// its declared result. For other fields, the formatters print an error message.
inline Verdict CheckFields(AutoCli::Command& command) {
  Verdict verdict;
  Structures structures;
  AddStructures(command.GetOutputSpec()->GetRootObject(), structures);
  const AutoCli::FormatParameters format = command.GetDefaultOutputFormatParameters();
  for (const auto& [key, value] : format.GetParameters()) {
    if (key != "fields" && key.rfind("fields:", 0) != 0) {
      continue;
    }
    for (const std::string& field : format.GetParameterAsList(key)) {
      const bool isKnown =
          std::any_of(structures.begin(), structures.end(), [&, k = key](const auto& entry) {
            return (k == "fields" || k == "fields:" + entry.first) &&
                   FindsField(format.GetFormatter(), *entry.second, field);
          });
      if (!isKnown) {
        verdict.Add("the format parameter " + key + " names the field '" + field +
                    "', which the declared result does not have");
      }
    }
  }
  return verdict;
}

/// Checks that a run succeeded and, unless it printed help, that its result has exactly the
/// declared shape, type names included, and that the default format names only fields of the
/// declared result.
inline Verdict CheckShape(const CommandRun& run) {
  Verdict verdict;
  for (const std::string& message : run.Messages()) {
    verdict.Add("it reports: " + message);
  }
  if (run.GetCommand() == nullptr) {
    verdict.Add("it names no command");
    return verdict;
  }
  if (run.Status() != 0 || run.GetOutput()->GetOutputType() != CallSpec::Output::Ordinary) {
    return verdict;
  }
  std::vector<std::string> errors;
  run.GetCommand()->GetOutputSpec()->Validate(run.GetOutput(), &errors);
  for (const std::string& error : errors) {
    verdict.Add("the result is not as declared: " + error);
  }
  verdict.Add(CheckFields(*run.GetCommand()), "the declaration");
  return verdict;
}

}  // namespace Kestrel::Testing

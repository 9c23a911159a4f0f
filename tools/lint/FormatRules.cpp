// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/FormatRules.h"

#include <algorithm>

#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaList.h"
#include "tools/lint/FileReport.h"
#include "vexil/FormatKeys.h"
#include "vexil/ResultTypes.h"

namespace Kestrel::Lint {

using MetaObj::MetaList;
using MetaObj::MetaType;

namespace {

using Words = std::vector<std::string>;

bool Contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string Join(const Words& words) {
  std::string joined;
  for (const std::string& word : words) {
    joined += (joined.empty() ? "" : ", ") + word;
  }
  return joined;
}

// Whether the formatter looks up the part of the key after the colon, as in "units:TYPE.FIELD".
bool IsQualified(const std::string& key) {
  for (const char* prefix : {"fields:", "units:", "printf:", "header:"}) {
    if (key.compare(0, std::string(prefix).size(), prefix) == 0) {
      return true;
    }
  }
  return false;
}

class Finder {
 public:
  Finder(const FormatDeclaration& declaration, const AutoCli::Dispatcher& dispatcher,
         const std::set<std::string>& others)
      : declaration_(declaration),
        formatter_(declaration.formatter),
        dispatcher_(dispatcher),
        others_(others),
        types_(Vexil::ListResultTypes(declaration.root)) {}

  std::vector<FormatFault> Run() {
    if (formatter_.empty()) {
      Add("formatter-missing",
          "there is no default formatter, so the command prints nothing by itself",
          "name one, such as 'simple'");
    } else if (!HasFormatter()) {
      Add("formatter-unknown", "there is no formatter " + Quote(formatter_),
          AdviseNearest(formatter_, ListFormatters(), "use one of " + Join(ListFormatters())));
    } else {
      CheckShape();
      CheckParameters();
    }
    return std::move(faults_);
  }

 private:
  void Add(const char* rule, const std::string& what, const std::string& advice) {
    faults_.push_back({rule, parameter_, what, advice});
  }

  bool HasFormatter() const {
    return dispatcher_.HasFormatter(formatter_) || others_.count(formatter_) != 0;
  }

  Words ListFormatters() const {
    Words names(others_.begin(), others_.end());
    for (const auto& formatter : dispatcher_.GetFormatters()) {
      names.push_back(formatter->GetName());
    }
    return names;
  }

  bool IsTable() const {
    const auto* const list = dynamic_cast<const MetaList*>(declaration_.root.get());
    return list != nullptr && list->GetListType() == MetaType::Struct;
  }

  void CheckShape() {
    if (formatter_ == "table" && declaration_.root != nullptr && !IsTable()) {
      Add("formatter-shape", "the formatter 'table' prints lists of structures only",
          "use 'simple', or declare a list of structures");
    }
  }

  void CheckParameters() {
    const std::optional<Words> keys = Vexil::ListFormatKeys(formatter_, types_);
    const auto formatter = keys ? nullptr : dispatcher_.GetFormatter(formatter_);
    for (std::size_t i = 0; i < declaration_.parameters.size(); ++i) {
      parameter_ = i;
      const auto& [key, value] = declaration_.parameters[i];
      if (key.empty()) {
        Add("format-parameter-unknown", "the format parameter has no name", "write its name");
      } else if (keys) {
        CheckLibraryKey(key, value, *keys);
      } else if (formatter != nullptr) {
        CheckOwnKey(key, value, *formatter);
      }
    }
  }

  void AddUnknownKey(const std::string& key, const Words& keys) {
    Add("format-parameter-unknown",
        "the formatter '" + formatter_ + "' has no parameter " + Quote(key),
        AdviseNearest(key, keys, keys.empty() ? "remove it" : "use one of " + Join(keys)));
  }

  void CheckLibraryKey(const std::string& key, const std::string& value, const Words& keys) {
    if (Contains(keys, key)) {
      Words fields = Vexil::ListChoosableFields(key, types_);
      if (!fields.empty()) {
        const Words paths = Vexil::ListFieldPaths(declaration_.root);
        fields.insert(fields.end(), paths.begin(), paths.end());
        CheckFields(value, fields);
      }
    } else if (!IsQualified(key)) {
      AddUnknownKey(key, keys);
    } else if (declaration_.root != nullptr) {
      Add("fields-unknown", Quote(key) + " names nothing in the declared result",
          AdviseNearest(key, keys, "use one of " + Join(keys)));
    }
  }

  // The formatters of the tool document all of their keys, so any other key is a mistake.
  void CheckOwnKey(const std::string& key, const std::string& value,
                   const AutoCli::Formatter& formatter) {
    Words keys;
    keys.reserve(formatter.GetParams().size());
    for (const auto& known : formatter.GetParams()) {
      keys.push_back(known.name);
    }
    const Words paths = Vexil::ListFieldPaths(declaration_.root);
    if (!Contains(keys, key)) {
      AddUnknownKey(key, keys);
    } else if (key == "fields" && !paths.empty()) {
      CheckFields(value, paths);
    }
  }

  void CheckFields(const std::string& value, const Words& fields) {
    for (const std::string& name : Vexil::SplitFieldNames(value)) {
      if (!Contains(fields, name)) {
        Add("fields-unknown", "no field is named " + Quote(name),
            AdviseNearest(name, fields, "use some of " + Join(fields)));
      }
    }
  }

  const FormatDeclaration& declaration_;
  const std::string& formatter_;
  const AutoCli::Dispatcher& dispatcher_;
  const std::set<std::string>& others_;
  const std::vector<Vexil::ResultType> types_;
  std::optional<std::size_t> parameter_;  // the one being checked
  std::vector<FormatFault> faults_;
};

}  // namespace

std::vector<FormatFault> FindFormatFaults(const FormatDeclaration& declaration,
                                          const AutoCli::Dispatcher& dispatcher,
                                          const std::set<std::string>& others) {
  return Finder(declaration, dispatcher, others).Run();
}

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "tools/lint/Checks.h"
#include "vexil/FormatKeys.h"
#include "vexil/ResultTypes.h"

namespace Kestrel::Lint {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaType;
using Vexil::ResultType;

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

// Whether the key is one whose part after the colon the formatter looks up, such as
// "units:TYPE.FIELD".
bool IsQualified(const std::string& key) {
  for (const char* prefix : {"fields:", "units:", "printf:", "header:"}) {
    if (key.compare(0, std::string(prefix).size(), prefix) == 0) {
      return true;
    }
  }
  return false;
}

class FormatCheck {
 public:
  FormatCheck(const CommandParts& command, const Host& host, FileReport& report)
      : host_(host), report_(report), root_(command.output->GetRootObject()) {
    types_ = Vexil::ListResultTypes(root_);
  }

  void CheckShape(const Element& output) {
    if (root_ == nullptr) {
      report_.Add("shape-missing", output, "no result is declared, so the command never succeeds",
                  "declare the shape of the result, such as <string/>");
    }
    for (const auto& child : output.children) {
      CheckShapeElement(*child);
    }
  }

  void CheckFormat(const Element& format) {
    const Element* const formatter = format.Find("formatter");
    if (formatter == nullptr || formatter->GetContent().empty()) {
      report_.Add("formatter-missing", format,
                  "there is no default formatter, so the command prints nothing by itself",
                  "name one, such as <formatter>simple</formatter>");
      return;
    }
    formatter_ = formatter->GetContent();
    if (!HasFormatter()) {
      report_.Add(
          "formatter-unknown", *formatter, "there is no formatter " + Quote(formatter_),
          AdviseNearest(formatter_, ListFormatters(), "use one of " + Join(ListFormatters())));
      return;
    }
    if (formatter_ == "table" && root_ != nullptr && !IsTable()) {
      report_.Add("formatter-shape", *formatter,
                  "the formatter 'table' prints lists of structures only",
                  "use 'simple', or declare a list of structures");
    }
    for (const Element* parameter : format.FindAll("format-parameter")) {
      CheckFormatParameter(*parameter);
    }
  }

 private:
  bool IsTable() const {
    const auto* const list = dynamic_cast<const MetaList*>(root_.get());
    return list != nullptr && list->GetListType() == MetaType::Struct;
  }

  bool HasFormatter() const {
    return host_.dispatcher.HasFormatter(formatter_) || host_.formatters.count(formatter_) != 0;
  }

  Words ListFormatters() const {
    Words names(host_.formatters.begin(), host_.formatters.end());
    for (const auto& formatter : host_.dispatcher.GetFormatters()) {
      names.push_back(formatter->GetName());
    }
    return names;
  }

  void CheckShapeElement(const Element& element) {
    if (element.name == "field" && element.children.empty()) {
      report_.Add("field-empty", element,
                  "the field '" + element.Get("name") + "' has no value, so it is not declared",
                  "add the kind of its value, such as <string/>");
    } else if (element.name == "list" && element.Get("type") == "structure" &&
               element.children.empty()) {
      report_.Add("shape-missing", element, "the list declares no structure",
                  "add the structure of its elements");
    }
    for (const auto& child : element.children) {
      CheckShapeElement(*child);
    }
  }

  void CheckFormatParameter(const Element& parameter) {
    const std::string& key = parameter.Get("name");
    if (key.empty()) {
      report_.Add("format-parameter-unknown", parameter, "the format parameter has no name",
                  "add the attribute 'name'");
      return;
    }
    const std::optional<Words> keys = Vexil::ListFormatKeys(formatter_, types_);
    if (keys) {
      CheckLibraryKey(parameter, key, *keys);
    } else if (const auto formatter = host_.dispatcher.GetFormatter(formatter_)) {
      CheckOwnKey(parameter, key, *formatter);
    }
  }

  void CheckLibraryKey(const Element& parameter, const std::string& key, const Words& keys) {
    if (Contains(keys, key)) {
      CheckFields(parameter, key);
    } else if (IsQualified(key) && root_ != nullptr) {
      report_.Add("fields-unknown", parameter, Quote(key) + " names nothing in the declared result",
                  AdviseNearest(key, keys, "use one of " + Join(keys)));
    } else if (!IsQualified(key)) {
      report_.Add(
          "format-parameter-unknown", parameter,
          "the formatter '" + formatter_ + "' has no parameter " + Quote(key),
          AdviseNearest(key, keys, keys.empty() ? "remove it" : "use one of " + Join(keys)));
    }
  }

  void CheckFields(const Element& parameter, const std::string& key) {
    Words fields = Vexil::ListChoosableFields(key, types_);
    if (fields.empty()) {
      return;
    }
    const Words paths = Vexil::ListFieldPaths(root_);
    fields.insert(fields.end(), paths.begin(), paths.end());
    for (const std::string& name : Vexil::SplitFieldNames(parameter.GetContent())) {
      if (!Contains(fields, name)) {
        report_.Add("fields-unknown", parameter, "no field is named " + Quote(name),
                    AdviseNearest(name, fields, "use some of " + Join(fields)));
      }
    }
  }

  // The formatters of the tool document their keys completely.
  void CheckOwnKey(const Element& parameter, const std::string& key,
                   const AutoCli::Formatter& formatter) {
    Words keys;
    keys.reserve(formatter.GetParams().size());
    for (const auto& known : formatter.GetParams()) {
      keys.push_back(known.name);
    }
    if (!Contains(keys, key)) {
      report_.Add(
          "format-parameter-unknown", parameter,
          "the formatter '" + formatter_ + "' has no parameter " + Quote(key),
          AdviseNearest(key, keys, keys.empty() ? "remove it" : "use one of " + Join(keys)));
      return;
    }
    const Words paths = key == "fields" ? Vexil::ListFieldPaths(root_) : Words();
    for (const std::string& name : Vexil::SplitFieldNames(parameter.GetContent())) {
      if (!paths.empty() && !Contains(paths, name)) {
        report_.Add("fields-unknown", parameter, "no field is named " + Quote(name),
                    AdviseNearest(name, paths, "use some of " + Join(paths)));
      }
    }
  }

  const Host& host_;
  FileReport& report_;
  std::shared_ptr<MetaObject> root_;
  std::vector<ResultType> types_;
  std::string formatter_;
};

}  // namespace

void CheckFormats(const CommandParts& command, const Host& host, FileReport& report) {
  if (command.output == nullptr) {
    return;
  }
  FormatCheck check(command, host, report);
  check.CheckShape(*command.element->Find("output-spec"));
  if (const Element* const format = command.element->Find("format-parameters")) {
    check.CheckFormat(*format);
  }
}

}  // namespace Kestrel::Lint

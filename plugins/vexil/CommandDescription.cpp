// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/vexil/CommandDescription.h"

#include <kestrel/metaobj/MetaList.h>

#include <map>
#include <string>
#include <vector>

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/vexil/ColumnNames.h"
#include "tools/catalog/CatalogWords.h"

namespace Kestrel::Vexil {

using Catalog::AllowedValue;
using Catalog::Command;
using Catalog::Constraint;
using Catalog::Example;
using Catalog::Field;
using Catalog::Parameter;
using Catalog::WordOf;
using Host::StructShape;
using MetaObj::MetaList;
using MetaObj::MetaStruct;

namespace {

constexpr const char* kNone = "none";

const StructShape& AllowedValueShape() {
  static const StructShape shape = StructShape("VexilAllowedValue")
                                       .String("Value", "A value that the parameter accepts.")
                                       .String("Description", "What the value means, or none.");
  return shape;
}

const StructShape& ParameterShape() {
  static const StructShape shape =
      StructShape("VexilParameter")
          .String("Name", "The long name, without dashes.")
          .String("Short Name", "The short name, without a dash, or none.")
          .String("Kind",
                  "string, int, bool or flag; string-list, int-list or bool-list if it may be "
                  "repeated.")
          .String("Description", "What the parameter is for, or none.")
          .String("Summary", "Kind, short name, constraint and values on one line, for readers.")
          .Bool("Required", "Whether the command fails without it.")
          .Bool("Secret", "Whether the value is prompted for without echo.")
          .Bool("Multiple", "Whether it may be repeated, each time with a value.")
          .String("Constraint", "What narrows the values, as messages say it, or none.")
          .Ints("Bounds", "The least and the greatest accepted integer; empty without a range.")
          .String("Expression", "The regular expression that a value has to match, or none.")
          .Structs("Values", AllowedValueShape(),
                   "The only accepted values; empty if they are not enumerated.");
  return shape;
}

const StructShape& FieldShape() {
  static const StructShape shape =
      StructShape("VexilField")
          .String("Path", "The names of the fields that lead to it, separated by full stops.")
          .String("Kind", "string, int, bool or structure; with -list added, a list of them.")
          .String("Type", "The type name of the structure or structures, or none.")
          .String("Documentation", "What the field contains, or none.");
  return shape;
}

const StructShape& ExampleShape() {
  static const StructShape shape = StructShape("VexilExample")
                                       .String("Description", "What the example does, or none.")
                                       .String("Line", "What to type after the name of the tool.");
  return shape;
}

const StructShape& SettingShape() {
  static const StructShape shape = StructShape("VexilSetting")
                                       .String("Name", "What is set.")
                                       .String("Value", "What it is set to, or none.");
  return shape;
}

std::string OrNone(const std::string& text) { return text.empty() ? kNone : text; }

std::shared_ptr<MetaStruct> ToStruct(const AllowedValue& value) {
  auto result = AllowedValueShape().NewStruct();
  result->SetField("Value", value.value);
  result->SetField("Description", OrNone(value.description));
  return result;
}

/// Returns the enumerated values of either type of enumeration.
std::vector<AllowedValue> ValuesOf(const Constraint& constraint) {
  std::vector<AllowedValue> values = constraint.strings;
  for (const std::int64_t integer : constraint.integers) {
    values.push_back({std::to_string(integer), ""});
  }
  return values;
}

std::vector<long> BoundsOf(const Constraint& constraint) {
  if (constraint.type != CallSpec::IntRange) {
    return {};
  }
  return {constraint.minimum, constraint.maximum};
}

template <typename Element, typename Make>
std::shared_ptr<MetaList> ToList(const StructShape& shape, const std::vector<Element>& elements,
                                 Make make) {
  auto list = shape.NewList();
  for (const Element& element : elements) {
    list->Add(make(element));
  }
  return list;
}

/// Formats values as "alpha (the first letter), beta".
std::string ListValues(const std::vector<AllowedValue>& values) {
  std::string list;
  for (const AllowedValue& value : values) {
    list += (list.empty() ? "" : ", ") + value.value +
            (value.description.empty() ? "" : " (" + value.description + ")");
  }
  return list;
}

/// Formats a parameter as "optional string, short name s, one of alpha (the first letter), beta".
std::string Summarize(const Parameter& parameter) {
  std::string summary = parameter.required ? "required " : "optional ";
  summary += (parameter.secret ? "secret " : "") + std::string(WordOf(parameter.kind));
  if (!parameter.shortName.empty()) {
    summary += ", short name " + parameter.shortName;
  }
  const Constraint& constraint = parameter.constraint;
  const std::string values = ListValues(ValuesOf(constraint));
  if (!constraint.text.empty()) {
    summary += ", " + (values.empty() ? constraint.text : "one of " + values);
  }
  return summary;
}

std::shared_ptr<MetaStruct> ToStruct(const Parameter& parameter) {
  auto result = ParameterShape().NewStruct();
  result->SetField("Name", parameter.name);
  result->SetField("Short Name", OrNone(parameter.shortName));
  result->SetField("Kind", WordOf(parameter.kind));
  result->SetField("Description", OrNone(parameter.description));
  result->SetField("Summary", Summarize(parameter));
  result->SetField("Required", parameter.required);
  result->SetField("Secret", parameter.secret);
  result->SetField("Multiple", parameter.multiple);
  const Constraint& constraint = parameter.constraint;
  result->SetField("Constraint", OrNone(constraint.text));
  result->SetField("Bounds", BoundsOf(constraint));
  result->SetField("Expression", OrNone(constraint.expression));
  result->SetField("Values", ToList(AllowedValueShape(), ValuesOf(constraint),
                                    [](const AllowedValue& value) { return ToStruct(value); }));
  return result;
}

std::shared_ptr<MetaStruct> ToStruct(const Field& field) {
  auto result = FieldShape().NewStruct();
  result->SetField("Path", field.path);
  result->SetField("Kind", WordOf(field.kind));
  result->SetField("Type", OrNone(field.typeName));
  result->SetField("Documentation", OrNone(field.documentation));
  return result;
}

std::shared_ptr<MetaStruct> ToStruct(const Example& example, const std::string& path) {
  auto result = ExampleShape().NewStruct();
  result->SetField("Description", OrNone(example.description));
  result->SetField("Line", path + (example.arguments.empty() ? "" : " ") + example.arguments);
  return result;
}

std::shared_ptr<MetaList> ToSettings(const std::map<std::string, std::string>& settings) {
  auto list = SettingShape().NewList();
  for (const auto& [name, value] : settings) {
    auto setting = SettingShape().NewStruct();
    setting->SetField("Name", name);
    setting->SetField("Value", OrNone(value));
    list->Add(setting);
  }
  return list;
}

}  // namespace

const StructShape& DescriptionShape() {
  static const StructShape shape =
      StructShape("VexilCommandDescription")
          .String("Path", "The words of the command's path, separated by a space.")
          .String("Description", "What the command does, or none.")
          .String("Plugin",
                  "The file of the plug-in that the command comes from, built-in, or unknown.")
          .Structs("Meta Data", SettingShape(), "What is said about the command to programs.")
          .Structs("Parameters", ParameterShape(),
                   "The parameters, except help, which every command has.")
          .String("Result Description", "What the command returns, or none.")
          .String("Result Kind", "As the kind of a field; none if no result is declared.")
          .String("Result Type", "The type name of the structure or structures, or none.")
          .Structs("Fields", FieldShape(), "The fields of the result and those within them.")
          .String("Formatter", "The formatter that prints the result by default, or none.")
          .Strings("Columns", "The fields that it prints by default, in their order.")
          .Structs("Format Parameters", SettingShape(), "The default parameters of the formatter.")
          .Structs("Examples", ExampleShape(), "How to call the command.");
  return shape;
}

std::shared_ptr<MetaStruct> MakeDescription(const Command& command, const Catalog::Plugin* plugin) {
  auto result = DescriptionShape().NewStruct();
  result->SetField("Path", command.path);
  result->SetField("Description", OrNone(command.description));
  result->SetField("Plugin", Host::SanitizedText(plugin != nullptr ? plugin->file : "unknown"));
  result->SetField("Meta Data", ToSettings(command.metaData));
  result->SetField("Parameters", ToList(ParameterShape(), command.parameters,
                                        [](const auto& one) { return ToStruct(one); }));
  const Catalog::Result& declared = command.result;
  result->SetField("Result Description", OrNone(declared.description));
  result->SetField("Result Kind", declared.kind.has_value() ? WordOf(*declared.kind) : kNone);
  result->SetField("Result Type", OrNone(declared.typeName));
  result->SetField("Fields", ToList(FieldShape(), declared.fields,
                                    [](const Field& field) { return ToStruct(field); }));
  result->SetField("Formatter", OrNone(command.formatter));
  result->SetField("Columns", ColumnNames(command));
  result->SetField("Format Parameters", ToSettings(command.formatParameters));
  result->SetField("Examples",
                   ToList(ExampleShape(), command.examples, [&command](const Example& example) {
                     return ToStruct(example, command.path);
                   }));
  return result;
}

}  // namespace Kestrel::Vexil

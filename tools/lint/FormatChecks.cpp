// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include "tools/lint/Checks.h"
#include "tools/lint/FormatRules.h"

namespace Kestrel::Lint {

namespace {

void CheckShapeElement(const Element& element, FileReport& report) {
  if (element.name == "field" && element.children.empty()) {
    report.Add("field-empty", element,
               "the field '" + element.Get("name") + "' has no value, so it is not declared",
               "add the kind of its value, such as <string/>");
  } else if (element.name == "list" && element.Get("type") == "structure" &&
             element.children.empty()) {
    report.Add("shape-missing", element, "the list declares no structure",
               "add the structure of its elements");
  }
  for (const auto& child : element.children) {
    CheckShapeElement(*child, report);
  }
}

void CheckShape(const CommandParts& command, FileReport& report) {
  const Element& output = *command.element->Find("output-spec");
  if (command.output->GetRootObject() == nullptr) {
    report.Add("shape-missing", output, "no result is declared, so the command never succeeds",
               "declare the shape of the result, such as <string/>");
  }
  for (const auto& child : output.children) {
    CheckShapeElement(*child, report);
  }
}

void CheckFormat(const CommandParts& command, const Element& format, const Host& host,
                 FileReport& report) {
  const Element* const formatter = format.Find("formatter");
  const std::vector<const Element*> parameters = format.FindAll("format-parameter");
  FormatDeclaration declaration;
  declaration.formatter = formatter == nullptr ? "" : formatter->GetContent();
  declaration.root = command.output->GetRootObject();
  declaration.parameters.reserve(parameters.size());
  for (const Element* parameter : parameters) {
    declaration.parameters.emplace_back(parameter->Get("name"), parameter->GetContent());
  }
  for (const FormatFault& fault : FindFormatFaults(declaration, host.dispatcher, host.formatters)) {
    const Element& place = fault.parameter                 ? *parameters[*fault.parameter]
                           : declaration.formatter.empty() ? format
                                                           : *formatter;
    report.Add(fault.rule, place, fault.what, fault.advice);
  }
}

}  // namespace

void CheckFormats(const CommandParts& command, const Host& host, FileReport& report) {
  if (command.output == nullptr) {
    return;
  }
  CheckShape(command, report);
  if (const Element* const format = command.element->Find("format-parameters")) {
    CheckFormat(command, *format, host, report);
  }
}

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Faults.h"

#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

namespace {

std::string Join(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (&name == names.data() ? "" : ".") + ShownText(name);
  }
  return text;
}

std::string NameOf(const ValueLocation& location) {
  if (!location.fields.empty()) {
    return "The field " + Join(location.fields);
  }
  return location.elements.empty() ? "The result" : "The value";
}

}  // namespace

ResultFault LocateFault(const ValueFault& fault, const ValueLocation& location) {
  std::string text = NameOf(location) + " " + fault.problem;
  const char* before = " (";
  for (const std::size_t position : location.elements) {
    text += before + ("element " + std::to_string(position));
    before = ", ";
  }
  return {text + (location.elements.empty() ? "" : ")")};
}

ResultFault LocateNameFault(const ValueFault& fault, const std::string& name) {
  if (name.empty()) {
    return {"The name of a field " + fault.problem};
  }
  return {"The name of the field " + ShownText(name) + " " + fault.problem};
}

}  // namespace Kestrel::Formats

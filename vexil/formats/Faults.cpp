// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Faults.h"

#include <utility>

#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

namespace {

std::string ShownPath(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += &name == names.data() ? "" : ".";
    text += ShownText(name);
  }
  return text;
}

std::string NameOf(const ValueLocation& location) {
  if (!location.fields.empty()) {
    return Concat({"The field ", ShownPath(location.fields)});
  }
  return location.elements.empty() ? "The result" : "The value";
}

}  // namespace

std::string Concat(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) {
    text += piece;
  }
  return text;
}

ResultFault LocateFault(const ValueFault& fault, const ValueLocation& location) {
  std::string text = Concat({NameOf(location), " ", fault.problem});
  std::string_view before = " (";
  for (const std::size_t position : location.elements) {
    text += Concat({before, "element ", std::to_string(position)});
    before = ", ";
  }
  text += location.elements.empty() ? "" : ")";
  return {std::move(text)};
}

ResultFault LocateNameFault(const ValueFault& fault, const std::string& name) {
  if (name.empty()) {
    return {Concat({"The name of a field ", fault.problem})};
  }
  return {Concat({"The name of the field ", ShownText(name), " ", fault.problem})};
}

}  // namespace Kestrel::Formats

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/InputProbe.h"

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel {

namespace {

std::vector<Lint::Misreading>& GetNoted() {
  static std::vector<Lint::Misreading> noted;
  return noted;
}

void Note(const CallSpec::Input& input, const std::string& name, const char* function,
          std::initializer_list<CallSpec::ParameterType> types) {
  const CallSpec::ParameterType actual = input.GetParameterType(name);
  for (const CallSpec::ParameterType type : types) {
    if (type == actual) {
      return;
    }
  }
  GetNoted().push_back({name, function});
}

std::vector<std::string> ListValues(const CallSpec::Input& input, const std::string& name) {
  std::vector<std::string> values;
  input.GetParameterList(name, values);
  return values;
}

}  // namespace

std::vector<Lint::Misreading> Lint::TakeMisreadings() { return std::exchange(GetNoted(), {}); }

std::int64_t CallSpec::Input::GetParameterInt(const std::string& name) const {
  Note(*this, name, "GetParameterInt", {Int});
  std::int64_t value = -1;
  ParameterSpec::GetInt(GetParameter(name), value);
  return value;
}

bool CallSpec::Input::GetParameterBool(const std::string& name) const {
  Note(*this, name, "GetParameterBool", {Bool});
  bool value = false;
  ParameterSpec::GetBool(GetParameter(name), value);
  return value;
}

void CallSpec::Input::GetParameterIntList(const std::string& name,
                                          std::vector<std::int64_t>& out) const {
  Note(*this, name, "GetParameterIntList", {IntList, Int});
  for (const std::string& text : ListValues(*this, name)) {
    std::int64_t value = 0;
    if (ParameterSpec::GetInt(text, value)) {
      out.push_back(value);
    }
  }
}

void CallSpec::Input::GetParameterBoolList(const std::string& name, std::vector<bool>& out) const {
  Note(*this, name, "GetParameterBoolList", {BoolList, Bool});
  for (const std::string& text : ListValues(*this, name)) {
    bool value = false;
    ParameterSpec::GetBool(text, value);
    out.push_back(value);
  }
}

}  // namespace Kestrel

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// The values that the user gave for a parameter. Accepts every value if the user gave none.
template <typename Value>
class ValueFilter {
 public:
  ValueFilter(const CallSpec::Input& input, const char* parameter);

  bool IsGiven() const { return !values_.empty(); }

  bool Accepts(const Value& value) const {
    return values_.empty() || std::find(values_.begin(), values_.end(), value) != values_.end();
  }

  /// Returns whether all values that the user gave are in `values`; true if the user gave none.
  bool AreAllIn(const std::vector<Value>& values) const {
    return std::all_of(values_.begin(), values_.end(), [&values](const Value& value) {
      return std::find(values.begin(), values.end(), value) != values.end();
    });
  }

  /// Returns whether at least one of `values` is accepted; true if the user gave none.
  bool AcceptsAnyOf(const std::vector<Value>& values) const {
    return values_.empty() || std::any_of(values.begin(), values.end(),
                                          [this](const Value& value) { return Accepts(value); });
  }

 private:
  std::vector<Value> values_;
};

template <>
inline ValueFilter<std::string>::ValueFilter(const CallSpec::Input& input, const char* parameter) {
  input.GetParameterList(parameter, values_);
}

template <>
inline ValueFilter<long>::ValueFilter(const CallSpec::Input& input, const char* parameter) {
  input.GetParameterIntList(parameter, values_);
}

template <>
inline ValueFilter<bool>::ValueFilter(const CallSpec::Input& input, const char* parameter) {
  input.GetParameterBoolList(parameter, values_);
}

using StringFilter = ValueFilter<std::string>;
using IntFilter = ValueFilter<long>;
using BoolFilter = ValueFilter<bool>;

}  // namespace Kestrel::Host

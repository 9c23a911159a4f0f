// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "callspec/ParameterLookup.h"

#include <algorithm>

namespace Kestrel::CallSpec {

SortedParameters::const_iterator LowerBound(const SortedParameters& parameters,
                                            const std::string& name) {
  return std::lower_bound(parameters.begin(), parameters.end(), name,
                          [](const std::shared_ptr<ParameterSpec>& spec, const std::string& text) {
                            return spec->GetName() < text;
                          });
}

const ParameterSpec* FindParameter(const SortedParameters& parameters, const std::string& name) {
  const auto position = LowerBound(parameters, name);
  const bool isFound = position != parameters.end() && (*position)->GetName() == name;
  return isFound ? position->get() : nullptr;
}

const ParameterSpec* FindByAnyName(const SortedParameters& parameters, const std::string& name) {
  if (name.size() != 1) {
    return FindParameter(parameters, name);
  }
  const auto position = std::find_if(
      parameters.begin(), parameters.end(),
      [&name](const std::shared_ptr<ParameterSpec>& spec) { return spec->GetShortName() == name; });
  return position == parameters.end() ? nullptr : position->get();
}

}  // namespace Kestrel::CallSpec

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::CallSpec {

/// Declared parameters in ascending order of their names, as `InputSpec` keeps them.
using SortedParameters = std::vector<std::shared_ptr<ParameterSpec>>;

/// The first parameter whose name is not less than `name`, byte-wise, or the end.
SortedParameters::const_iterator LowerBound(const SortedParameters& parameters,
                                            const std::string& name);

/// The parameter of exactly that name, owned by the list, or null.
const ParameterSpec* FindParameter(const SortedParameters& parameters, const std::string& name);

}  // namespace Kestrel::CallSpec

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::CallSpec {

/// Declared parameters in ascending byte order of their names, as in `InputSpec`.
using SortedParameters = std::vector<std::shared_ptr<ParameterSpec>>;

/// Returns the first parameter whose long name is not less than `name` in byte order, or the end.
SortedParameters::const_iterator LowerBound(const SortedParameters& parameters,
                                            const std::string& name);

/// Returns the parameter whose long name is `name`; null when there is none. The list owns it.
const ParameterSpec* FindParameter(const SortedParameters& parameters, const std::string& name);

/// Returns the parameter whose long or short name is `name`; null when there is none. The list owns
/// it. A name of one character is a short name, since `InputSpec` refuses long names of that
/// length.
const ParameterSpec* FindByAnyName(const SortedParameters& parameters, const std::string& name);

}  // namespace Kestrel::CallSpec

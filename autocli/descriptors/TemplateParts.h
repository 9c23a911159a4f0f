// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "autocli/descriptors/TemplateText.h"

namespace Kestrel::AutoCli {

/// Inserts the parameters `names` into a template, in this order. `apply` inserts one parameter
/// into a part of the template.
///
/// Each parameter is looked for only in the part that contains its markers. So the time depends on
/// the size of the template, not on the number of parameters.
///
/// Returns nothing when the parameters cannot be separated. The caller must then insert them into
/// the whole template, one after the other, which is always correct.
std::optional<TemplateText> ApplyInParts(
    std::string_view text, const std::vector<std::string>& names,
    const std::function<void(TemplateText& part, const std::string& name)>& apply);

}  // namespace Kestrel::AutoCli

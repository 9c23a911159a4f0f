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

/// Puts the parameters of these names into a template, in this order, each one into the part of the
/// template that holds its markers: the time is that of the text, however many parameters there
/// are. `apply` puts one parameter into a text.
///
/// Nothing is returned when the parameters cannot be kept apart so. They are then to be put into
/// the whole text, one after the other, and that is always right.
std::optional<TemplateText> ApplyInParts(
    std::string_view text, const std::vector<std::string>& names,
    const std::function<void(TemplateText& part, const std::string& name)>& apply);

}  // namespace Kestrel::AutoCli

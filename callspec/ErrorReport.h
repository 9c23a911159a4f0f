// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

/// Appends `message` to the errors of `output`. Throws KestrelException when there is no output:
/// a caller without one would never learn why its values were refused.
void ReportError(const std::shared_ptr<Output>& output, std::string&& message);

}  // namespace Kestrel::CallSpec

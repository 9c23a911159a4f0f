// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

/// Adds the error message `message` to `output`. Throws KestrelException when `output` is null,
/// because the caller would otherwise not learn why its values are invalid.
void ReportError(const std::shared_ptr<Output>& output, std::string&& message);

}  // namespace Kestrel::CallSpec

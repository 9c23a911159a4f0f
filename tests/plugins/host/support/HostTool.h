// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/testing/TestTool.h"

namespace Kestrel::Testing {

/// Returns the tool with the host plug-in, which all tests of the program share.
const TestTool& GetTool();

}  // namespace Kestrel::Testing

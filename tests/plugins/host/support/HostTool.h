// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/testing/TestTool.h"

namespace Kestrel::Testing {

/// The tool with the host plug-in, for all tests of the program.
const TestTool& GetTool();

}  // namespace Kestrel::Testing

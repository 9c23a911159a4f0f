// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The whole test kit for plug-ins: `Run`, `Printed`, `ExpectGolden`, `CheckShape`, `RunExamples`
/// and `RunHostileValues`. It needs no test framework; kestrel/testing/GoogleTest.h and
/// kestrel/testing/Catch2.h turn a `Verdict` into an assertion.

#include "kestrel/testing/Examples.h"
#include "kestrel/testing/Golden.h"
#include "kestrel/testing/HostileValues.h"
#include "kestrel/testing/Shape.h"
#include "kestrel/testing/TestTool.h"
#include "kestrel/testing/Verdict.h"

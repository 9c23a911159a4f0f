// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>

#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// Turns a verdict into an assertion that prints the problems:
/// `EXPECT_TRUE(Passes(RunExamples("./greet.so")))`.
inline ::testing::AssertionResult Passes(const Verdict& verdict) {
  return verdict ? ::testing::AssertionSuccess()
                 : ::testing::AssertionFailure() << verdict.ToString();
}

}  // namespace Kestrel::Testing

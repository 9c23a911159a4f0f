// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>

#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// For `EXPECT_TRUE(Passes(RunExamples("./greet.so")))`: prints the problems.
inline ::testing::AssertionResult Passes(const Verdict& verdict) {
  return verdict ? ::testing::AssertionSuccess()
                 : ::testing::AssertionFailure() << verdict.ToString();
}

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#if __has_include(<catch2/catch_test_macros.hpp>)
#include <catch2/catch_test_macros.hpp>  // version 3
#else
#include <catch2/catch.hpp>  // version 2
#endif

#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// Fails the test if there are problems, and prints them: `CheckPasses(RunExamples("./greet.so"))`.
inline void CheckPasses(const Verdict& verdict) {
  INFO(verdict.ToString());
  CHECK(static_cast<bool>(verdict));
}

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gmock/gmock.h>

#include <string>

namespace Kestrel::Testing {

/// Matches a string that equals the file `tests/golden/<name>.txt` byte for byte, including
/// trailing spaces and the last newline: EXPECT_THAT(text, MatchesGolden("table/wrap-last")).
///
/// With KESTREL_REWRITE_GOLDEN=1 in the environment it writes the file instead and matches. Review
/// the difference as a change of behaviour.
::testing::Matcher<std::string> MatchesGolden(const std::string& name);

}  // namespace Kestrel::Testing

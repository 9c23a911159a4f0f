// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gmock/gmock.h>

#include <string>

namespace Kestrel::Testing {

/// Whether a text equals the file `tests/golden/<name>.txt` byte for byte, trailing blanks and the
/// last line end included: EXPECT_THAT(text, MatchesGolden("table/wrap-last")).
///
/// With KESTREL_REWRITE_GOLDEN=1 in the environment the file is written instead and matches; look
/// at the difference as at a change of behaviour.
::testing::Matcher<std::string> MatchesGolden(const std::string& name);

}  // namespace Kestrel::Testing

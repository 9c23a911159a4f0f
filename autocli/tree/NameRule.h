// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

/// Whether `name` is valid for a namespace or a command: only ASCII letters and digits, at least
/// one, the first not an upper-case letter, no two upper-case letters in a row. Takes linear time
/// and never throws.
bool MatchesNameRule(std::string_view name);

}  // namespace Kestrel::AutoCli

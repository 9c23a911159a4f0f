// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

/// Whether the whole of `name` is a name for a namespace or a command: one or more runs of
/// lower-case ASCII letters and digits, each followed by at most one upper-case letter. Looks at
/// every byte once and never throws, however long the name.
bool MatchesNameRule(std::string_view name);

}  // namespace Kestrel::AutoCli

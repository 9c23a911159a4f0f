// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "autocli/descriptors/MarkedText.h"

namespace Kestrel::AutoCli {

/// `text` without the conditionals that are left in it, each with the braces nested in it. Braces
/// and "$" that a value brought in do not count. Time is linear in the text, however deep it nests.
MarkedText WithoutConditionals(const MarkedText& text);

}  // namespace Kestrel::AutoCli

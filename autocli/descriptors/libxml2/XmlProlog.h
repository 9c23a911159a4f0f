// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

/// Returns whether the document `text` is encoded in UTF-8 and has no document type.
///
/// Reads only what comes before the root element, and does not check that it is well-formed.
bool HasPlainProlog(std::string_view text);

}  // namespace Kestrel::AutoCli

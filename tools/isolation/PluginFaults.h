// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Kestrel::Isolation {

/// Loads a shared object with all of its functions bound, and returns the loader's message about a
/// function that is not defined; nothing if all are. The loader looks up a function when it is
/// called first, which may be long after the start of the tool. Has to be called before the file is
/// loaded in another way.
std::optional<std::string> FindMissingSymbol(const std::string& file);

/// Returns the exception that is being handled in words, such as "a std::exception: no fuel";
/// nothing for a KestrelException.
std::optional<std::string> DescribeForeignException();

}  // namespace Kestrel::Isolation

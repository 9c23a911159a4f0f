// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Kestrel::Isolation {

/// Returns a path with a slash to the same file: the loader would search its own folders for a name
/// without one.
std::string PathForLoader(const std::string& file);

/// Loads a shared object with all of its functions bound, and returns the loader's message about a
/// function that is not defined, or nothing. Otherwise, the loader looks up a function at its first
/// call, which may be long after the start of the tool. Must be called before the file is loaded in
/// another way.
std::optional<std::string> FindMissingSymbol(const std::string& file);

/// Returns a description of the exception that is being handled, such as "a std::exception: no
/// fuel", or nothing for a KestrelException.
std::optional<std::string> DescribeForeignException();

}  // namespace Kestrel::Isolation

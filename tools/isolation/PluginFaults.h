// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Kestrel::Isolation {

/// Returns a path that contains a slash and leads to the same file. Without a slash, the loader
/// would search its own folders.
std::string PathForLoader(const std::string& file);

/// Loads a shared object, binding all of its functions immediately, and returns the loader's
/// message about an undefined function, or nothing. With lazy binding, the loader looks up a
/// function when it is first called, perhaps long after the start of the tool. Must be called
/// before the file is loaded in any other way.
std::optional<std::string> FindMissingSymbol(const std::string& file);

/// Returns a description of the exception that is being handled, such as "a std::exception: no
/// fuel", or nothing for a KestrelException.
std::optional<std::string> DescribeForeignException();

}  // namespace Kestrel::Isolation

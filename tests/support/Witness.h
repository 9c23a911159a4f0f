// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// Returns the standard output of a shell command in the C locale. Fails the test if the command
/// fails or does not exist.
std::string Witness(const std::string& command);

/// Returns the lines of the output, without an empty last one.
std::vector<std::string> WitnessLines(const std::string& command);

/// Returns the words of `text`, which white space separates. With a limit, returns at most that
/// many words, the last of which is the rest of the text.
std::vector<std::string> WordsIn(const std::string& text, std::size_t limit = 0);

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Console {

/// The command line is wrong; the message says what is wrong with it.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The options that a program accepts, with their hyphens.
struct OptionNames {
  std::vector<std::string_view> flags;
  std::vector<std::string_view> withValue;
};

/// Receives an option and its value, which is empty for a flag; for an operand, `option` is empty.
using ArgumentHandler = std::function<void(const std::string& option, const std::string& value)>;

/// Passes the arguments of a program to `handle`, from left to right.
///
/// The value of an option is the rest of its word after "=", or the next word. Words that do not
/// begin with "-", the word "-" and all words after "--" are operands. Throws UsageError for an
/// unknown option, for an option without its value and for a flag with one.
void ReadArguments(const std::vector<std::string>& words, const OptionNames& names,
                   const ArgumentHandler& handle);

}  // namespace Kestrel::Console

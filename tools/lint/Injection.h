// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/lint/ShellReader.h"

namespace Kestrel::Lint {

/// What a value can do to the command line that it is inserted into.
struct Verdict {
  /// Each of the optional members contains a value that has the effect in its name, or nothing if
  /// none was found.
  std::optional<std::string> runsCommand;
  std::optional<std::string> addsWord;
  std::optional<std::string> addsOption;
  /// A value that loses its single quotes on the way but is otherwise unchanged.
  std::optional<std::string> losesQuotes;
  /// A value that arrives altered in another way, or that leaves the command line incomplete.
  std::optional<std::string> isAltered;
  /// Whether the line has parts that are not understood, so that the effect is unknown.
  bool isUnknown = false;
  /// The interpreter, if the value becomes a part of a program for another interpreter, such as awk
  /// or a second shell; otherwise empty.
  std::string program;
};

/// Inserts values into a template as the library does, and parses the result as a shell does. Runs
/// nothing.
class Injection {
 public:
  Injection(const std::string& execute, std::shared_ptr<CallSpec::InputSpec> input);

  /// Returns what values of the parameter `name` can do.
  Verdict Judge(const std::string& name) const;

  /// Returns what one value of the parameter can do while all others are harmless or not given.
  Verdict JudgeValue(const std::string& name, const std::string& value) const;

  /// Returns the command line for these values; nothing if the library refuses them.
  std::optional<std::string> MakeLine(
      const std::map<std::string, std::vector<std::string>>& values) const;

 private:
  using Values = std::map<std::string, std::vector<std::string>>;

  /// Returns the calls to try, which lack `name`: one with all other parameters and, if these are
  /// not all required, one with the required ones only.
  std::vector<Values> MakeCalls(const std::string& name) const;
  const CallSpec::ParameterSpec* Find(const std::string& name) const;
  void JudgeCall(const Values& call, const CallSpec::ParameterSpec& parameter,
                 const std::string& value, Verdict& verdict) const;
  static void Compare(const CallSpec::ParameterSpec& parameter, const std::string& value,
                      const ShellReading& plain, const ShellReading& hostile, Verdict& verdict);

  std::string execute_;
  std::shared_ptr<CallSpec::InputSpec> input_;
};

}  // namespace Kestrel::Lint

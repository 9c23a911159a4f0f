// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/ValuePool.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "tools/lint/Language.h"

namespace Kestrel::Lint {

using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;

namespace {

constexpr std::size_t kMaxEnumerated = 200;

// Values that may mislead a shell as they are. "canary" stands for any command.
const std::vector<std::string>& GetAttempts() {
  static const std::vector<std::string> attempts = {"",
                                                    "canary",
                                                    "a b",
                                                    " a",
                                                    "a ",
                                                    "a\tb",
                                                    "-x",
                                                    "--x=1",
                                                    " -x",
                                                    "a -x",
                                                    "'",
                                                    "''",
                                                    "a'b",
                                                    "' b '",
                                                    "' ; canary ; '",
                                                    "'; canary #",
                                                    "\"",
                                                    "\" b \"",
                                                    "\"; canary; \"",
                                                    "\" -x \"",
                                                    "$(canary)",
                                                    "`canary`",
                                                    ";canary",
                                                    "; canary;",
                                                    "&canary",
                                                    "|canary",
                                                    "a\ncanary\n",
                                                    "\ncanary\n",
                                                    "a}b",
                                                    "}",
                                                    "} b",
                                                    "}; canary; ",
                                                    "?",
                                                    "a?",
                                                    "[ab]",
                                                    "{a,b}",
                                                    "{1..3}",
                                                    "~",
                                                    "#",
                                                    "a #b",
                                                    "\\",
                                                    "a\\",
                                                    "X=1",
                                                    "X=1 canary",
                                                    "X= canary",
                                                    "*",
                                                    "!",
                                                    "a!b",
                                                    "<x",
                                                    ">x",
                                                    "(a)",
                                                    "$HOME",
                                                    "${x}",
                                                    "-",
                                                    "--",
                                                    "a\rb",
                                                    "\xC3\xA4 b",
                                                    "a;b c",
                                                    "a\nb",
                                                    "a\n b",
                                                    "-\n",
                                                    "{-x,b}",
                                                    "' -x '",
                                                    "x' -x 'y",
                                                    "true; canary",
                                                    "a && canary"};
  return attempts;
}

// Kinds of values that mislead a shell, as expressions. For each, the shortest value that also
// meets the constraint is tried.
const std::vector<std::string>& GetWays() {
  static const std::vector<std::string> ways = [] {
    std::vector<std::string> list = {"[a-z]*",
                                     "[^ \\t\\n#'\"]+[ \\t][^ \\t\\n#].*",
                                     "[^ \\t'\"]*[ \\t][ \\t\\n]*[^ \\t\\n#].*",
                                     ".*[ \\t][ \\t\\n]*-[^ \\t\\n].*",
                                     "[ \\t\\n]*-[^ \\t\\n].*",
                                     "[ \\t]+[^ \\t\\n#].*",
                                     "[^ \\t\\n]+[ \\t]+",
                                     "'*-'*[^'].*",
                                     ".*\\{[^ {}'\"]*,[^ {}'\"]*\\}.*",
                                     ".*\\{[0-9]+\\.\\.[0-9]+\\}.*",
                                     ".*\\{[a-z]\\.\\.[a-z]\\}.*",
                                     "[^'\"]*\\$\\([a-z]+\\)[^'\"]*",
                                     "[^'\"]*`[a-z]+`[^'\"]*",
                                     "[^'\"#]*[;&|\\n] *[a-z]+[^'\"#()]*",
                                     "[^'\"#]*[;&|\\n] *[a-z]+ *[;&\\n][^'\"#()]*",
                                     "[^'\"]*\"[^'\"]*[ \\t][^'\"]*\"[^'\"]*",
                                     "[^'\"]*\"[^'\"]*[;&|\\n] *[a-z]+ *[;&|\\n]?[^'\"]*\"[^'\"]*",
                                     "[^'\"]*'[^'\"]*[ \\t][^'\"]*'[^'\"]*",
                                     "[^'\"]*'[^'\"]*[;&|\\n] *[a-z]+ *[;&|\\n]?[^'\"]*'[^'\"]*",
                                     "[A-Za-z_][A-Za-z0-9_]*=[^ ]*[ \\t]+[a-z]+.*",
                                     "[^ ]*[?][^ ]*",
                                     "[^ ]*\\[[^\\] /]+\\][^ ]*",
                                     "[?].*",
                                     "[^}]*\\}.*[ \\t].*",
                                     "[^ #]*[ \\t]#.*"};
    for (const std::string byte :
         {" ",   "\\t", "\\n", "'",   "\"",  "\\\\", "\\$", "`",   ";",   "&",
          "\\|", "<",   ">",   "\\(", "\\)", "\\{",  "\\}", "\\[", "\\]", "\\?",
          "\\*", "~",   "#",   "!",   "=",   ",",    "-",   "\\^"}) {
      list.push_back(".*" + byte + ".*");
      list.push_back(byte + ".*");
      list.push_back(".*" + byte);
      list.push_back(".*" + byte + ".*" + byte + ".*");
    }
    return list;
  }();
  return ways;
}

const std::vector<Language>& GetWayLanguages() {
  static const std::vector<Language> languages = [] {
    std::vector<Language> list;
    for (const std::string& way : GetWays()) {
      if (std::optional<Language> language = Language::Parse(way)) {
        list.push_back(*std::move(language));
      }
    }
    return list;
  }();
  return languages;
}

// An integer is passed as it was typed, with leading spaces, signs and zeros.
void AddIntegers(const ParameterSpec& parameter, std::vector<std::string>& values) {
  std::vector<std::int64_t> numbers = {0, 7, -7};
  if (const auto& constraint = parameter.GetConstraint()) {
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    constraint->GetIntRange(minimum, maximum);
    const std::vector<std::int64_t>& listed = constraint->GetIntEnum();
    numbers.insert(numbers.end(), listed.begin(), listed.end());
    numbers.insert(numbers.end(), {minimum, maximum});
  }
  for (const std::int64_t number : numbers) {
    const std::string text = std::to_string(number);
    const bool isNegative = text[0] == '-';
    const std::string sign = isNegative ? "-" : "";
    const std::string digits = text.substr(sign.size());
    for (const char* prefix : {"", " ", "\t", "\n", "\r", " \n"}) {
      values.push_back(prefix + text);
      values.push_back(std::string(prefix).append(sign).append("0").append(digits));
      values.push_back(std::string(prefix).append(isNegative ? "-" : "+").append(digits));
    }
    values.push_back("-" + digits);
    values.push_back(" -" + digits);
  }
}

void AddStrings(const ParameterSpec& parameter, std::vector<std::string>& values) {
  const auto& constraint = parameter.GetConstraint();
  if (constraint != nullptr && constraint->GetType() == CallSpec::StringEnum) {
    const std::vector<std::string>& listed = constraint->GetStringEnum();
    values.insert(values.end(), listed.begin(),
                  listed.size() <= kMaxEnumerated
                      ? listed.end()
                      : listed.begin() + static_cast<std::ptrdiff_t>(kMaxEnumerated));
    return;
  }
  values.insert(values.end(), GetAttempts().begin(), GetAttempts().end());
  const bool isRestricted = constraint != nullptr && constraint->GetType() == CallSpec::StringRegex;
  const std::optional<Language> own =
      Language::Parse(isRestricted ? constraint->GetStringRegex() : ".*");
  for (const Language& way : own ? GetWayLanguages() : std::vector<Language>()) {
    if (const std::optional<std::string> value = own->FindCommon(way)) {
      values.push_back(*value);
    }
  }
}

// An expression that does not compile throws, and accepts nothing.
bool IsAccepted(const ParameterSpec& parameter, const std::string& value) {
  const auto output = CallSpec::Output::New();
  try {
    return parameter.Validate({value}, output) && !output->HasError();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

std::vector<std::string> MakeHostileValues(const ParameterSpec& parameter) {
  std::vector<std::string> values;
  switch (parameter.GetType()) {
    case CallSpec::Int:
    case CallSpec::IntList:
      AddIntegers(parameter, values);
      break;
    case CallSpec::Bool:
    case CallSpec::BoolList:
      values = {"1", "0", "yes", "no", "true", "False", "t", "F"};
      break;
    case CallSpec::Flag:
      break;
    default:
      AddStrings(parameter, values);
  }
  std::vector<std::string> accepted;
  std::set<std::string> seen;
  for (const std::string& value : values) {
    if (seen.insert(value).second && IsAccepted(parameter, value)) {
      accepted.push_back(value);
    }
  }
  return accepted;
}

}  // namespace Kestrel::Lint

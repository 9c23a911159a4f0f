// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/UnknownWord.h"

#include <string_view>

namespace Kestrel::Vexil {

namespace {

constexpr std::string_view kSpaces = " \t\n\v\f\r";

// A message of the library: "<before>WORD<between>PATH<after>". The word can contain any character;
// the names in the path consist of letters and digits.
struct Form {
  std::string_view before;
  std::string_view between;
  std::string_view after;
};

constexpr Form kInNamespace = {"Unable to find a command or namespace with the name '",
                               "' in namespace ", ""};
constexpr Form kOnCommand = {"Unable to find a namespace or command with the name '",
                             "' on the command '",
                             "'. Commands cannot have sub-commands or sub-namespaces."};

bool IsEnclosedBy(std::string_view text, std::string_view before, std::string_view after) {
  return text.size() >= before.size() + after.size() && text.substr(0, before.size()) == before &&
         text.substr(text.size() - after.size()) == after;
}

std::optional<Words> ReadForm(const Form& form, std::string_view message) {
  if (!IsEnclosedBy(message, form.before, form.after)) {
    return std::nullopt;
  }
  message.remove_prefix(form.before.size());
  message.remove_suffix(form.after.size());
  const std::size_t end = message.rfind(form.between);
  if (end == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string path(message.substr(end + form.between.size()));
  return SplitWords(path + " " + std::string(message.substr(0, end)), kSpaces);
}

}  // namespace

std::optional<Words> ReadUnknownWord(const std::string& message) {
  const std::optional<Words> words = ReadForm(kInNamespace, message);
  return words ? words : ReadForm(kOnCommand, message);
}

}  // namespace Kestrel::Vexil

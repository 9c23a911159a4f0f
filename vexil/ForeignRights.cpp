// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/ForeignRights.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "autocli/text/StartsWith.h"

namespace Kestrel::Vexil {

namespace {

constexpr const char* kPath = "/usr/sbin:/usr/bin:/sbin:/bin";
constexpr std::size_t kMaxValueLength = 64;

using Variable = std::pair<std::string, std::string>;

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("_.@:,+-").find(c) != std::string_view::npos;
}

// Whether the tool keeps the variable. A value with a slash could be a path, and a value with a
// percent sign could be a format, so neither is kept.
bool IsKept(const Variable& variable) {
  const auto& [name, value] = variable;
  const bool isKnown =
      name == "LANG" || name == "TERM" || name == "TZ" || AutoCli::StartsWith(name, "LC_");
  return isKnown && value.size() <= kMaxValueLength &&
         std::all_of(value.begin(), value.end(), IsPlain);
}

std::vector<Variable> FindKeptVariables() {
  std::vector<Variable> kept;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const std::size_t end = std::min(text.find('='), text.size());
    Variable variable(text.substr(0, end), text.substr(std::min(end + 1, text.size())));
    if (IsKept(variable)) {
      kept.push_back(std::move(variable));
    }
  }
  return kept;
}

}  // namespace

void CleanEnvironment() {
  const std::vector<Variable> kept = FindKeptVariables();
  clearenv();
  for (const auto& [name, value] : kept) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  setenv("PATH", kPath, 1);
  umask(umask(0) | S_IWGRP | S_IWOTH);
}

std::vector<std::string> RefuseOptions(const AutoCli::OptionParser& parser) {
  std::vector<std::string> messages;
  for (const char* const name : {"input", "plugin", "plugin-dir"}) {
    if (parser.HasDispatcherParameter(name)) {
      messages.push_back("The option --" + std::string(name) +
                         " is not allowed, because this process has rights that its user does not "
                         "have");
    }
  }
  return messages;
}

}  // namespace Kestrel::Vexil

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/explain/ShellTexts.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/metaobj/MetaString.h"

namespace Kestrel::Explain {

using AutoCli::CommandInput;
using AutoCli::ExtensionCommand;

namespace {

// Only letters and digits, so that no form of a marker changes it.
constexpr const char* kPlaceholder = "KestrelHiddenSecret7f3a91";

std::string ShowSecrets(std::string text) {
  const std::string placeholder = kPlaceholder;
  for (std::size_t at = text.find(placeholder); at != std::string::npos;
       at = text.find(placeholder, at + 3)) {
    text.replace(at, placeholder.size(), "***");
  }
  return text;
}

// Returns the assignment with which the shell sets OPR_USERNAME for the command.
std::string SetUser(const std::string& user) {
  if (user.empty()) {
    return {};
  }
  std::string quoted;
  for (const char c : user) {
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return "OPR_USERNAME='" + quoted + "' ";
}

// Whether the byte belongs to a control character. In UTF-8, this is one byte, or 0xc2 and a byte
// below 0xa0.
bool IsControl(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0xffU;
  };
  return byte(at) < 0x20 || byte(at) == 0x7f || (byte(at) == 0xc2 && byte(at + 1) < 0xa0) ||
         (at > 0 && byte(at - 1) == 0xc2 && byte(at) < 0xa0);
}

ShellTexts MakeTexts(ExtensionCommand& command, const std::shared_ptr<CommandInput>& input) {
  ShellTexts texts;
  const bool takesUser = command.GetInputSpec()->IsContextSupported("user");
  texts.commandLine = takesUser ? SetUser(input->GetContext("user")) : std::string();
  if (std::getenv("LANG") == nullptr) {
    texts.commandLine += "LANG=en_US.UTF-8 ";
  }
  texts.commandLine += command.SubstituteInput(input, false);
  texts.standardInput = command.SubstituteInput(input, true);
  return texts;
}

}  // namespace

ShellTexts MakeShellTexts(ExtensionCommand& command, const ExplainedCall& call) {
  MakeTexts(command, call.GetInput());  // throws for a secret that is refused
  ShellTexts texts = MakeTexts(command, call.HideSecrets(kPlaceholder));
  texts.commandLine = ShowSecrets(std::move(texts.commandLine));
  texts.standardInput = ShowSecrets(std::move(texts.standardInput));
  return texts;
}

std::string Quote(const std::string& text) {
  const std::string valid = MetaObj::MetaString::NewUtf8WithEscapes(std::string(text))->ToString();
  std::string quoted = "'";
  for (std::size_t i = 0; i < valid.size(); ++i) {
    if (IsControl(valid, i)) {
      char escape[5];
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(valid[i]));
      quoted += escape;
    } else {
      quoted += valid[i];
    }
  }
  return quoted + "'";
}

}  // namespace Kestrel::Explain

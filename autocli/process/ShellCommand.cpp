// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/ShellCommand.h"

#include <utility>
#include <vector>

#include "autocli/process/ChildProcess.h"
#include "autocli/process/TypedSecrets.h"
#include "kestrel/autocli/Util.h"

namespace Kestrel::AutoCli {

namespace {

CommandExecListener commandExecListener = nullptr;
ChildRpZolOptionMaker childRpZolOptionMaker = nullptr;

/// Escapes `text` for use within single quotes.
std::string InsideSingleQuotes(const std::string& text) {
  std::string quoted;
  for (const char c : text) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  return quoted;
}

}  // namespace

int RunShellCommand(const std::string& commandLine, const std::string& userName,
                    std::string& output, const std::string& stdinData) {
  if (userName.empty()) {
    return AutoCli_ShellCmd(commandLine, output, stdinData);
  }
  std::string withUser = "OPR_USERNAME='" + InsideSingleQuotes(userName) + "' " + commandLine;
  const WipeAtEnd wipe(withUser);
  return AutoCli_ShellCmd(withUser, output, stdinData);
}

int AutoCli_ShellCmd(const std::string& commandLine, std::string& output,
                     const std::string& stdinData) {
  std::vector<std::string> arguments = {"/bin/sh"};
  std::string option = MakeChildRpZolOption(-1);
  if (!option.empty()) {
    arguments.push_back(std::move(option));
  }
  arguments.emplace_back("-c");
  const WipeAtEnd wipe(arguments.emplace_back(commandLine));
  const int status = RunChildProcess(arguments, commandLine, output, stdinData);
  if (commandExecListener != nullptr) {
    commandExecListener(commandLine, status);
  }
  return status;
}

int AutoCli_ShellCmdWithOprUsername(const std::string& commandLine, const std::string& userName,
                                    std::string& output, const std::string& stdinData) {
  return RunShellCommand(commandLine, userName, output, stdinData);
}

void SetCommandExecListener(CommandExecListener listener) { commandExecListener = listener; }

void SetChildRpZolOptionMaker(ChildRpZolOptionMaker maker) { childRpZolOptionMaker = maker; }

std::string MakeChildRpZolOption(int id) {
  return childRpZolOptionMaker == nullptr ? std::string() : childRpZolOptionMaker(id);
}

}  // namespace Kestrel::AutoCli

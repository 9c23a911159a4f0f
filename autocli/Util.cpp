#include "kestrel/autocli/Util.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "autocli/formatters/FieldStyle.h"
#include "autocli/process/ChildProcess.h"
#include "autocli/text/FitText.h"
#include "autocli/text/TextWriter.h"

void Panic(const char* format, ...) {
  static char message[256];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, sizeof(message), format, arguments);
  va_end(arguments);
  std::fprintf(stderr, "panic: %s", message);
  std::abort();
}

namespace Kestrel::AutoCli {

namespace {

CommandExecListener commandExecListener = nullptr;
ChildRpZolOptionMaker childRpZolOptionMaker = nullptr;

/// `text` as the inside of a word in single quotes.
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

std::string AutoCli_FormatField(const std::string& typeName, const std::string& fieldName,
                                std::shared_ptr<MetaObj::MetaObject> value,
                                FormatParameters& params) {
  const bool isStyled = value != nullptr && FieldStyle::IsUsedBy(params);
  const FieldStyle style = isStyled ? FieldStyle(typeName, fieldName, params) : FieldStyle();
  return style.MakeText(value.get());
}

void AutoCli_FitString(const int& indent, const int& width, const std::string& text,
                       bool skipFirstIndent, std::ostream& out, bool endLine, char wrapChar,
                       bool splitLines) {
  TextWriter writer(out);
  FitText(text, {indent, width, skipFirstIndent, endLine, wrapChar, splitLines}, writer);
  writer.HandOn();
}

int AutoCli_ShellCmd(const std::string& commandLine, std::string& output,
                     const std::string& stdinData) {
  std::vector<std::string> arguments = {"/bin/sh"};
  std::string option = MakeChildRpZolOption(-1);
  if (!option.empty()) {
    arguments.push_back(std::move(option));
  }
  arguments.insert(arguments.end(), {"-c", commandLine});
  const int status = RunChildProcess(arguments, commandLine, output, stdinData);
  if (commandExecListener != nullptr) {
    commandExecListener(commandLine, status);
  }
  return status;
}

int AutoCli_ShellCmdWithOprUsername(const std::string& commandLine, const std::string& userName,
                                    std::string& output, const std::string& stdinData) {
  if (userName.empty()) {
    return AutoCli_ShellCmd(commandLine, output, stdinData);
  }
  return AutoCli_ShellCmd("OPR_USERNAME='" + InsideSingleQuotes(userName) + "' " + commandLine,
                          output, stdinData);
}

void SetCommandExecListener(CommandExecListener listener) { commandExecListener = listener; }

void SetChildRpZolOptionMaker(ChildRpZolOptionMaker maker) { childRpZolOptionMaker = maker; }

std::string MakeChildRpZolOption(int id) {
  return childRpZolOptionMaker == nullptr ? std::string() : childRpZolOptionMaker(id);
}

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Session.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <string_view>
#include <vector>

#include "autocli/text/StartsWith.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/OutputSpec.h"
#include "vexil/Advice.h"
#include "vexil/CommandLine.h"
#include "vexil/FindNode.h"
#include "vexil/PrettyRequest.h"

namespace Kestrel::Vexil {

using AutoCli::OptionParser;

namespace {

constexpr const char* kPrettyOption = "--formatter=pretty";

bool IsPrettyWanted() { return IsPrettyRequested() && isatty(STDOUT_FILENO) == 1; }

/// Sets the current line; the destructor resets it to null.
class CurrentLine {
 public:
  CurrentLine(const OptionParser*& line, const OptionParser& parser) : line_(line) {
    line_ = &parser;
  }
  CurrentLine(const CurrentLine&) = delete;
  CurrentLine& operator=(const CurrentLine&) = delete;
  ~CurrentLine() { line_ = nullptr; }

 private:
  const OptionParser*& line_;
};

Words ListArguments(int argc, const char* const* argv) {
  Words words;
  for (int i = 1; i < argc && argv[i] != nullptr; ++i) {
    words.emplace_back(argv[i]);
  }
  return words;
}

/// Whether spaces before the first token of the line belong to that token, as in `"" x`. They would
/// not belong to it if an option were put before the line.
bool BeginsWithQuotedSpace(std::string_view line) {
  const std::string_view begin = line.substr(0, line.find_first_not_of(" \t\""));
  return begin.find('"') < begin.find_last_of(" \t") + 1;
}

/// A file of lines. It does not use a C++ stream: with immediate binding, the dynamic linker would
/// look up the symbols of the stream at each start of the tool.
class LineFile {
 public:
  explicit LineFile(const std::string& name) : file_(std::fopen(name.c_str(), "r")) {}
  LineFile(const LineFile&) = delete;
  LineFile& operator=(const LineFile&) = delete;
  ~LineFile() {
    std::free(line_);
    if (file_ != nullptr) {
      std::fclose(file_);
    }
  }

  /// Whether the first byte can be read, or the file is empty. A directory can be opened too, but
  /// it cannot be read.
  bool IsReadable() const {
    if (file_ == nullptr) {
      return false;
    }
    std::ungetc(std::getc(file_), file_);
    return !HasFailed();
  }

  bool HasFailed() const { return std::ferror(file_) != 0; }

  /// Reads a line without its line feed. Returns false at the end of the file or if reading failed.
  bool ReadLine(std::string& line) {
    const ssize_t size = getline(&line_, &capacity_, file_);
    if (size < 0) {
      return false;
    }
    line.assign(line_, static_cast<std::size_t>(size));
    if (line.back() == '\n') {
      line.pop_back();
    }
    return true;
  }

 private:
  std::FILE* file_;
  char* line_ = nullptr;
  std::size_t capacity_ = 0;
};

/// Whether these options make the dispatcher load plug-ins and then do nothing but read one input.
bool ReadsOneInput(const OptionParser& parser) {
  return parser.GetParseErrors().empty() && parser.GetDispatcherParameter("input").size() == 1 &&
         !parser.HasDispatcherParameter("h") && !parser.HasDispatcherParameter("help");
}

}  // namespace

Session::Session(AutoCli::CliDispatcher& dispatcher)
    : dispatcher_(dispatcher), isPrettyWanted_(IsPrettyWanted()) {}

bool Session::HandleArguments(int argc, const char* const* argv) {
  OptionParser parser;
  parser.ParseArgv(argc, argv);
  words_ = ListArguments(argc, argv);
  if (ReadsOneInput(parser)) {
    return ReadInput(parser);
  }
  if (!IsFormatterWanted(parser) || words_.empty()) {
    return HandleLine(parser, true);
  }
  std::vector<const char*> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, kPrettyOption);
  OptionParser extended;
  extended.ParseArgv(argc + 1, arguments.data());
  hasAddedFormatter_ = true;
  return HandleLine(extended, true);
}

bool Session::IsFormatterWanted(const OptionParser& parser) const {
  return isPrettyWanted_ && !parser.HasDispatcherParameter("formatter");
}

bool Session::HandleLine(OptionParser& parser, bool isOfArguments) {
  const CurrentLine line(line_, parser);
  const bool result = dispatcher_.HandleOptions(parser, isOfArguments);
  if (IsPretty()) {
    words_.insert(words_.begin(), kPrettyOption);
  }
  std::fflush(stdout);  // first, so that output and hints appear in order
  PrintHints(dispatcher_, words_);
  return result;
}

bool Session::ReadInput(OptionParser& parser) {
  AutoCli::FormatParameters ignored;
  dispatcher_.HandleDispatcherOptions(parser, ignored, AutoCli::CommandOutput::New());
  const Words arguments = words_;
  const std::string name = parser.GetDispatcherParameter("input")[0];
  const bool result = name == "STDIN" ? ReadStandardInput() : ReadFile(name);
  PrintHints(dispatcher_, arguments);
  return result;
}

template <typename ReadLine>
bool Session::HandleLines(const ReadLine& readLine) {
  bool result = true;
  for (std::string line; readLine(line);) {
    OptionParser parser;
    if (!parser.ParseString(line)) {
      words_ = SplitLine(line);
      result = HandleText(line, parser);
    }
  }
  return result;
}

// A failed read ends the loop over the lines just as the end of the input does. It must be
// reported, because lines may be lost. std::cin is bad only if a line did not fit into memory.
bool Session::ReadStandardInput() {
  std::clearerr(stdin);
  // Uses std::cin, because a prompt for a secret reads its value from std::cin, too.
  const bool result = HandleLines(
      [](std::string& line) { return static_cast<bool>(std::getline(std::cin, line, '\n')); });
  if (std::ferror(stdin) == 0 && !std::cin.bad()) {
    return result;
  }
  PrintMessage("Unable to read standard input");
  return false;
}

bool Session::ReadFile(const std::string& name) {
  LineFile file(name);
  if (!file.IsReadable()) {
    PrintMessage("Unable to open file " + name);
    return false;
  }
  const bool result = HandleLines([&file](std::string& line) { return file.ReadLine(line); });
  if (!file.HasFailed()) {
    return result;
  }
  PrintMessage("Unable to read file " + name);
  return false;
}

bool Session::HandleText(const std::string& line, OptionParser& parser) {
  hasAddedFormatter_ = IsFormatterWanted(parser) && !BeginsWithQuotedSpace(line);
  if (!hasAddedFormatter_) {
    return HandleLine(parser, false);
  }
  OptionParser extended;
  extended.ParseString(std::string(kPrettyOption) + " " + line);
  return HandleLine(extended, false);
}

bool Session::IsPretty() const {
  const auto command = hasAddedFormatter_ ? FindCommand() : nullptr;
  if (command == nullptr) {
    return false;
  }
  return YieldsToPretty(command->GetDefaultOutputFormatParameters().GetFormatter());
}

std::shared_ptr<AutoCli::CommandSpec> Session::FindCommand() const {
  if (line_ == nullptr) {
    return nullptr;
  }
  const auto& path = line_->GetCommandPath();
  const auto node = FindNode(dispatcher_.GetRootNamespace(), Words(path.begin(), path.end()));
  return std::dynamic_pointer_cast<AutoCli::CommandSpec>(node);
}

std::shared_ptr<MetaObj::MetaObject> Session::FindDeclaredResult() const {
  const auto command = FindCommand();
  return command == nullptr ? nullptr : command->GetOutputSpec()->GetRootObject();
}

bool Session::HasFormatParameter(const std::string& key) const {
  if (line_ == nullptr) {
    return false;
  }
  const auto values = line_->GetDispatcherParameter("format-param");
  return std::any_of(values.begin(), values.end(), [&key](const std::string& value) {
    return AutoCli::StartsWith(value, key + "=");
  });
}

}  // namespace Kestrel::Vexil

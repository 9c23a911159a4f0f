// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/CommandLine.h"

#include <cstddef>

#include "kestrel/autocli/OptionParser.h"

namespace Kestrel::Vexil {

namespace {

class Splitter {
 public:
  explicit Splitter(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  std::vector<TypedOption> TakeOptions() {
    std::vector<TypedOption> options;
    while (!IsAtEnd() && !IsAtWord()) {
      options.push_back(TakeOption());
    }
    return options;
  }

  Words TakeWords() {
    Words words;
    for (; IsAtWord(); ++next_) {
      words.push_back(arguments_[next_]);
    }
    return words;
  }

  Words TakeRest() {
    return {arguments_.begin() + static_cast<std::ptrdiff_t>(next_), arguments_.end()};
  }

 private:
  bool IsAtEnd() const { return next_ == arguments_.size(); }
  bool IsAtWord() const { return !IsAtEnd() && !parser_.IsParameter(arguments_[next_]); }

  TypedOption TakeOption() {
    const std::string& token = arguments_[next_++];
    TypedOption option;
    option.spelling = token.substr(0, token.find('='));
    const bool hasValue = parser_.ParseParameter(token, option.name, option.value);
    option.tookWord = !hasValue && IsAtWord();
    if (option.tookWord) {
      option.value = arguments_[next_++];
    }
    return option;
  }

  const std::vector<std::string>& arguments_;
  std::size_t next_ = 0;
  AutoCli::OptionParser parser_;
};

}  // namespace

Words SplitLine(const std::string& line) {
  Words words;
  bool inQuotes = false;
  bool isInWord = false;
  for (const char byte : line) {
    const bool isSpace = !inQuotes && (byte == ' ' || byte == '\t');
    inQuotes = inQuotes != (byte == '"');
    if (!isSpace && !isInWord) {
      words.emplace_back();
    }
    isInWord = !isSpace;
    if (isInWord && byte != '"') {
      words.back() += byte;
    }
  }
  return words;
}

CommandLine SplitCommandLine(const std::vector<std::string>& arguments) {
  Splitter splitter(arguments);
  CommandLine line;
  line.dispatcherOptions = splitter.TakeOptions();
  line.path = splitter.TakeWords();
  line.commandOptions = splitter.TakeOptions();
  line.extraWords = splitter.TakeRest();
  return line;
}

}  // namespace Kestrel::Vexil

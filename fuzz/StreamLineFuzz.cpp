// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: one line of a stream.
//
// The parser's tokens equal those of a simple reference tokenizer. Tokens written in quotes are
// read back unchanged.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzInput.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/autocli/OptionParser.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::OptionParser;

bool IsSpaceOrTab(char c) { return c == ' ' || c == '\t'; }

std::string WithoutQuotes(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
  return text;
}

// A state machine that reads one byte at a time.
class ReferenceTokenizer {
 public:
  explicit ReferenceTokenizer(const std::string& line) : line_(line) {
    for (std::size_t i = 0; i < line.size() && !isComment_; ++i) {
      Handle(line[i], i);
    }
    const std::string last = WithoutQuotes(line.substr(std::min(start_, line.size())));
    if (!isComment_ && !last.empty()) {
      tokens_.push_back(last);
    }
  }

  const std::vector<std::string>& GetTokens() const { return tokens_; }

 private:
  void Handle(char c, std::size_t position) {
    if (isBetween_ && IsSpaceOrTab(c)) {
      start_ = position + 1;
      return;
    }
    isBetween_ = false;
    if (c == '"') {
      isQuoted_ = !isQuoted_;
    } else if (!IsSpaceOrTab(c)) {
      isComment_ = !hasBegun_ && c == '#';
      hasBegun_ = true;
    } else if (!hasBegun_) {
      ++start_;
    } else if (!isQuoted_) {
      tokens_.push_back(WithoutQuotes(line_.substr(start_, position - start_)));
      start_ = position + 1;
      isBetween_ = true;
    }
  }

  const std::string& line_;
  std::vector<std::string> tokens_;
  std::size_t start_ = 0;
  bool isQuoted_ = false;
  bool hasBegun_ = false;
  bool isBetween_ = false;  // after the space or tab that ended a token
  bool isComment_ = false;
};

std::string Dump(const std::vector<std::string>& tokens) {
  OptionParser parser;
  parser.ParseVector(tokens);
  return parser.ToString();
}

// Whether the tokens can be written in quotes. Quotes have no effect at the start of a line, so
// they cannot protect a first token that is empty or begins with a space, a tab or "#".
bool CanBeQuoted(const std::vector<std::string>& tokens) {
  const std::string& first = tokens.front();
  return !first.empty() && first[0] != '#' && !IsSpaceOrTab(first[0]);
}

std::string Quoted(const std::vector<std::string>& tokens) {
  std::string line;
  for (const std::string& token : tokens) {
    line += "\"" + token + "\" ";
  }
  return line;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  const std::string line = FuzzInput(data, size).TakeRest();
  const std::vector<std::string> tokens = ReferenceTokenizer(line).GetTokens();

  const Usage usage(size);
  OptionParser parser;
  const bool isSkipped = parser.ParseString(line);
  usage.Check();
  Require(isSkipped == tokens.empty(), "a line without tokens is skipped");
  RequireEqual(parser.ToString(), Dump(tokens), "the tokens are those of the reference tokenizer");

  if (!tokens.empty() && CanBeQuoted(tokens)) {
    OptionParser again;
    again.ParseString(Quoted(tokens));
    RequireEqual(again.ToString(), Dump(tokens), "tokens in quotes read back");
  }
  return 0;
}

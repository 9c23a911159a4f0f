// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The grammar of one token (letters and digits are ASCII; a byte has any value):
//
//   option = "-" letter | "--" name | "--" name "=" byte {byte}
//   name   = letter (letter | digit | "-") {letter | digit | "-"}
//
// The grammar of one line:
//
//   line   = {option [word]} {word} {option [word]} {word}
//            dispatcher      path   command         extra words, an error
//
// A word is any token that is not an option. The value of an option without "=" is the word after
// it.

#include "kestrel/autocli/OptionParser.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "autocli/process/EchoGuard.h"
#include "autocli/process/TypedSecrets.h"
#include "autocli/text/Report.h"
#include "callspec/ParameterLookup.h"
#include "kestrel/KestrelException.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::AutoCli {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t kMaxUnmovedLine = 4096;  // the longest line that a terminal accepts

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsNameCharacter(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '-'; }

bool IsShortOption(const std::string& token) {
  return token.size() == 2 && token[0] == '-' && IsLetter(token[1]);
}

// Returns the end of the name of a long option, 0 when the token does not begin with one.
std::size_t FindLongNameEnd(const std::string& token) {
  if (token.size() < 4 || token[0] != '-' || token[1] != '-' || !IsLetter(token[2])) {
    return 0;
  }
  std::size_t end = 3;
  while (end < token.size() && IsNameCharacter(token[end])) {
    ++end;
  }
  return end > 3 ? end : 0;
}

// Whether one of the eight bytes at `text` is less than or equal to a double quote. This is true of
// the space, the tab and the double quote itself.
bool MayEndToken(const char* text) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint64_t bytes;
  std::memcpy(&bytes, text, sizeof bytes);
  return ((bytes - kOnes * ('"' + 1)) & ~bytes & kHighBits) != 0;
}

bool IsAboveQuote(char c) { return static_cast<unsigned char>(c) > '"'; }

// Returns the next space or tab outside quotes from `position` on, or the end of the line.
// `inQuotes` is whether `position` is inside quotes, and afterwards whether the result is.
std::size_t FindTokenEnd(const std::string& line, std::size_t position, bool& inQuotes) {
  const std::size_t size = line.size();
  for (;; ++position) {
    while (position + 8 <= size && !MayEndToken(line.data() + position)) {
      position += 8;
    }
    while (position < size && IsAboveQuote(line[position])) {
      ++position;
    }
    if (position == size || (IsBlank(line[position]) && !inQuotes)) {
      return position;
    }
    if (line[position] == '"') {
      inQuotes = !inQuotes;
    }
  }
}

std::string CutWithoutQuotes(const std::string& line, std::size_t start, std::size_t end) {
  std::string token(line, start, end - start);
  if (token.find('"') != std::string::npos) {
    token.erase(std::remove(token.begin(), token.end(), '"'), token.end());
  }
  return token;
}

// Skips spaces, tabs and quotes before the first token and returns its position. Each space or tab
// advances `start` by one, but quotes do not, so that the line `"" x` has the token ` x`.
std::size_t FindFirstToken(const std::string& line, std::size_t& start, bool& inQuotes) {
  std::size_t position = 0;
  for (; position < line.size(); ++position) {
    if (line[position] == '"') {
      inQuotes = !inQuotes;
    } else if (IsBlank(line[position])) {
      ++start;
    } else {
      break;
    }
  }
  return position;
}

std::vector<std::string> SplitLine(const std::string& line) {
  const std::size_t size = line.size();
  std::size_t start = 0;
  bool inQuotes = false;
  std::size_t position = FindFirstToken(line, start, inQuotes);
  if (position < size && line[position] == '#') {
    return {};
  }
  std::vector<std::string> tokens;
  while ((position = FindTokenEnd(line, position, inQuotes)) < size) {
    tokens.push_back(CutWithoutQuotes(line, start, position));
    while (position < size && IsBlank(line[position])) {
      ++position;
    }
    start = position;
  }
  std::string last = CutWithoutQuotes(line, start, size);
  if (!last.empty()) {
    tokens.push_back(std::move(last));
  }
  return tokens;
}

std::vector<std::string> GetValues(const Pairs& pairs, const std::string& name) {
  std::vector<std::string> values;
  for (const auto& [given, value] : pairs) {
    if (given == name) {
      values.push_back(value);
    }
  }
  return values;
}

bool HasName(const Pairs& pairs, const std::string& name) {
  return std::any_of(pairs.begin(), pairs.end(),
                     [&name](const auto& pair) { return pair.first == name; });
}

void AppendPairs(const Pairs& pairs, std::string& text) {
  for (const auto& [name, value] : pairs) {
    text += "\n   --" + name + " = '" + value + "'";
  }
}

// Throws if reading failed, which ends a line just as the end of the input does. A closed standard
// input counts as empty.
void RequireStandardInput() {
  if (std::ferror(stdin) != 0 && errno != EBADF) {
    throw KestrelException("Unable to read standard input");
  }
}

// Reads a line from standard input. First clears the end of input that an earlier prompt may have
// met, because a terminal can continue after it.
std::string ReadLine() {
  std::clearerr(stdin);
  std::cin.clear();
  std::string line;
  // The line must not move while it is read: that would leave a part of a secret in memory.
  line.reserve(kMaxUnmovedLine);
  std::getline(std::cin, line);
  RequireStandardInput();
  return line;
}

// Overwrites what the C library has read from standard input and passed on.
void WipeInputBuffer() {
#ifdef __GLIBC__
  if (stdin->_IO_read_ptr > stdin->_IO_read_base) {
    explicit_bzero(stdin->_IO_read_base,
                   static_cast<std::size_t>(stdin->_IO_read_ptr - stdin->_IO_read_base));
  }
#endif
}

// Echo is off before the prompt appears, so that nothing typed as an answer can be seen.
std::string ReadSecret(const std::string& prompt) {
  const EchoGuard guard(prompt);
  TypedSecrets::Expect();
  WriteUnpadded(std::cout, prompt);
  std::cout.flush();
  std::string secret = ReadLine();
  WipeInputBuffer();
  TypedSecrets::Add(secret);
  return secret;
}

}  // namespace

OptionParser::OptionParser() : OptionParser("vexil") {}

OptionParser::OptionParser(const std::string& dispatcher) : dispatcher_(dispatcher) {}

void OptionParser::ParseArgv(int argc, const char* const* argv) {
  if (argc < 1 || argv[0] == nullptr) {
    return;
  }
  dispatcher_ = argv[0];
  std::vector<std::string> tokens;
  for (int i = 1; i < argc && argv[i] != nullptr; ++i) {
    tokens.emplace_back(argv[i]);
  }
  ParseVector(std::move(tokens));
}

void OptionParser::ParseVector(std::vector<std::string> tokens) {
  if (tokens.empty()) {
    return;
  }
  TokenQueue queue{std::move(tokens)};
  // No declaration: these options are the dispatcher's, not the command's.
  dispatcherParameters_ = TakeOptions(queue, nullptr);
  path_ = TakeWords(queue);
  remaining_ = std::move(queue);
}

bool OptionParser::ParseString(const std::string& line) {
  std::vector<std::string> tokens = SplitLine(line);
  if (tokens.empty()) {
    return true;
  }
  ParseVector(std::move(tokens));
  return false;
}

void OptionParser::ParseStack(std::stack<std::string> tokens) {
  std::vector<std::string> fromTheLeft;
  fromTheLeft.reserve(tokens.size());
  for (; !tokens.empty(); tokens.pop()) {
    fromTheLeft.push_back(std::move(tokens.top()));
  }
  ParseVector(std::move(fromTheLeft));
}

void OptionParser::SetInputSpec(std::shared_ptr<CallSpec::InputSpec> spec) {
  inputSpec_ = std::move(spec);
}

void OptionParser::ProcessCommandArguments() {
  if (remaining_.empty()) {
    return;
  }
  commandParameters_ = TakeOptions(remaining_, inputSpec_.get());
  ReportExtraArguments();
}

void OptionParser::ReportExtraArguments() {
  if (remaining_.empty()) {
    return;
  }
  std::string message = "Found Extra non-parameter arguments at the end of input: ";
  for (; !remaining_.empty(); remaining_.pop()) {
    message += "'" + remaining_.top() + "' ";
  }
  errors_.push_back(std::move(message));
}

const Pairs& OptionParser::GetCommandParameters() {
  ProcessCommandArguments();
  return commandParameters_;
}

std::vector<std::string> OptionParser::GetCommandParameter(const std::string& name) {
  return GetValues(GetCommandParameters(), name);
}

bool OptionParser::HasCommandParameter(const std::string& name) {
  return HasName(GetCommandParameters(), name);
}

const Pairs& OptionParser::GetDispatcherParameters() const { return dispatcherParameters_; }

std::vector<std::string> OptionParser::GetDispatcherParameter(const std::string& name) const {
  return GetValues(dispatcherParameters_, name);
}

bool OptionParser::HasDispatcherParameter(const std::string& name) const {
  return HasName(dispatcherParameters_, name);
}

const std::string& OptionParser::GetDispatcher() const { return dispatcher_; }

const std::list<std::string>& OptionParser::GetCommandPath() const { return path_; }

const std::list<std::string>& OptionParser::GetNamespaces() const { return path_; }

const std::vector<std::string>& OptionParser::GetParseErrors() const { return errors_; }

bool OptionParser::IsParsed() const { return parsed_; }

std::string OptionParser::ToString() {
  std::string text = parsed_ ? "Parsed: 1" : "Parsed: 0";
  text += "\nDispatcher: " + dispatcher_;
  text += "\nErrors: ";
  for (const std::string& error : errors_) {
    text += "\n   " + error;
  }
  text += "\nPath: ";
  for (const std::string& word : path_) {
    text += "'" + word + "'";
  }
  text += "\nDispatch Params: ";
  AppendPairs(dispatcherParameters_, text);
  text += "\nCommand Params: ";
  AppendPairs(GetCommandParameters(), text);
  text += "\n";
  return text;
}

std::string OptionParser::GetSilentString() {
  const EchoGuard guard("");
  return ReadLine();
}

bool OptionParser::IsParameter(const std::string& token) const {
  if (IsShortOption(token)) {
    return true;
  }
  const std::size_t end = FindLongNameEnd(token);
  if (end == 0) {
    return false;
  }
  return end == token.size() || (token[end] == '=' && end + 1 < token.size());
}

bool OptionParser::ParseParameter(const std::string& token, std::string& name, std::string& value) {
  if (!IsParameter(token)) {
    errors_.push_back("Attempt to parse option failed.  Input was : " + token);
    return false;
  }
  if (IsShortOption(token)) {
    name.assign(token, 1, 1);
    value.clear();
    return false;
  }
  const std::size_t end = FindLongNameEnd(token);
  name.assign(token, 2, end - 2);
  if (end == token.size()) {
    value.clear();
    return false;
  }
  value.assign(token, end + 1);
  return true;
}

std::list<std::string> OptionParser::ParsePath(std::stack<std::string>& tokens) {
  return TakeWords(tokens);
}

Pairs OptionParser::ParseParameters(std::stack<std::string>& tokens) {
  return TakeOptions(tokens, inputSpec_.get());
}

template <typename Tokens>
std::list<std::string> OptionParser::TakeWords(Tokens& tokens) const {
  std::list<std::string> words;
  for (; !tokens.empty() && !IsParameter(tokens.top()); tokens.pop()) {
    words.push_back(std::move(tokens.top()));
  }
  return words;
}

template <typename Tokens>
Pairs OptionParser::TakeOptions(Tokens& tokens, const CallSpec::InputSpec* spec) {
  Pairs pairs;
  while (!tokens.empty() && IsParameter(tokens.top())) {
    const std::string token = std::move(tokens.top());
    tokens.pop();
    std::string name;
    std::string value;
    if (!ParseParameter(token, name, value)) {
      if (!tokens.empty() && !IsParameter(tokens.top())) {
        value = std::move(tokens.top());
        tokens.pop();
      } else {
        value = GetMissingValue(token, name, spec);
      }
    }
    pairs.emplace_back(std::move(name), std::move(value));
  }
  return pairs;
}

std::string OptionParser::GetMissingValue(const std::string& token, const std::string& name,
                                          const CallSpec::InputSpec* spec) {
  const CallSpec::ParameterSpec* declared =
      spec == nullptr ? nullptr : CallSpec::FindByAnyName(spec->GetParameters(), name);
  if (declared == nullptr) {
    return {};
  }
  if (declared->IsSecret()) {
    std::string secret = ReadSecret("Enter value for '" + declared->GetName() + "': ");
    std::cout.put('\n');
    return secret;
  }
  // Neither "help" nor "h" needs a value, whatever its declared type.
  if (declared->GetType() != CallSpec::ParameterType::Flag && declared->GetName() != "help") {
    errors_.push_back(token + " must have value");
  }
  return {};
}

}  // namespace Kestrel::AutoCli

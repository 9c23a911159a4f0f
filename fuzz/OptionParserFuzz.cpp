// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: one token a line.
//
// The parser reads what a slow reader reads, and what it makes of a command line, written as a
// command line again, is read as the same.

#include "kestrel/autocli/OptionParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "FuzzInput.h"
#include "Property.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::OptionParser;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::shared_ptr<InputSpec> MakeInputSpec() {
  auto spec = InputSpec::New();
  // No secret: it would be read from the standard input of this program.
  for (const auto& [name, type] :
       {std::pair("all", ParameterType::Flag), std::pair("level", ParameterType::Int),
        std::pair("name", ParameterType::String)}) {
    auto parameter = ParameterSpec::New(name, type);
    parameter->SetShortName(std::string(1, *name));
    spec->AddParameter(parameter);
  }
  return spec;
}

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsNameByte(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '-'; }

// Reads tokens one by one, without a declaration.
class SlowReading {
 public:
  explicit SlowReading(std::vector<std::string> tokens) : tokens_(std::move(tokens)) {
    dispatcherOptions = TakeOptions();
    while (!IsAtEnd() && !Cut(tokens_[next_])) {
      path.push_back(tokens_[next_++]);
    }
    parameters = TakeOptions();
    countOfExtraWords = tokens_.size() - next_;
  }

  Pairs dispatcherOptions;
  std::list<std::string> path;
  Pairs parameters;
  std::size_t countOfExtraWords = 0;

 private:
  struct Option {
    std::string name;
    std::string value;
  };

  // The name and the value of an option, nothing for a word.
  static std::optional<Option> Cut(const std::string& token) {
    const std::size_t dashes = std::min(token.find_first_not_of('-'), token.size());
    if (dashes == 1 && token.size() == 2 && IsLetter(token[1])) {
      return Option{token.substr(1), ""};
    }
    if (dashes != 2 || !IsLetter(token[2])) {
      return std::nullopt;
    }
    const std::size_t equals = token.find('=');
    const std::string name = token.substr(2, equals == std::string::npos ? equals : equals - 2);
    if (name.size() < 2 || !std::all_of(name.begin(), name.end(), IsNameByte)) {
      return std::nullopt;
    }
    if (equals == std::string::npos) {
      return Option{name, ""};
    }
    const std::string value = token.substr(equals + 1);
    return value.empty() ? std::nullopt : std::optional(Option{name, value});
  }

  bool IsAtEnd() const { return next_ == tokens_.size(); }

  Pairs TakeOptions() {
    Pairs pairs;
    while (!IsAtEnd()) {
      std::optional<Option> option = Cut(tokens_[next_]);
      if (!option) {
        break;
      }
      ++next_;
      if (option->value.empty() && !IsAtEnd() && !Cut(tokens_[next_])) {
        option->value = tokens_[next_++];
      }
      pairs.emplace_back(option->name, option->value);
    }
    return pairs;
  }

  const std::vector<std::string> tokens_;
  std::size_t next_ = 0;
};

void RequireReadsSlowly(OptionParser& parser, const std::vector<std::string>& tokens) {
  const SlowReading slow(tokens);
  Require(parser.GetDispatcherParameters() == slow.dispatcherOptions, "options are those given");
  Require(parser.GetCommandPath() == slow.path, "the path is the one given");
  Require(parser.GetCommandParameters() == slow.parameters, "parameters are those given");
  Require(parser.GetParseErrors().size() == (slow.countOfExtraWords == 0 ? 0 : 1),
          "words too many are told of, and nothing else");
}

// A value that is empty, or follows a short name, is a token of its own.
void AppendOptions(const Pairs& pairs, std::vector<std::string>& tokens) {
  for (const auto& [name, value] : pairs) {
    const bool isLong = name.size() > 1;
    tokens.push_back((isLong ? "--" : "-") + name);
    if (isLong && !value.empty()) {
      tokens.back() += "=" + value;
    } else {
      tokens.push_back(value);
    }
  }
}

void RequireReadsBack(OptionParser& parser) {
  std::vector<std::string> tokens;
  AppendOptions(parser.GetDispatcherParameters(), tokens);
  tokens.insert(tokens.end(), parser.GetCommandPath().begin(), parser.GetCommandPath().end());
  AppendOptions(parser.GetCommandParameters(), tokens);

  OptionParser again;
  again.ParseVector(tokens);
  Require(again.GetDispatcherParameters() == parser.GetDispatcherParameters(),
          "dispatcher options read back");
  Require(again.GetCommandPath() == parser.GetCommandPath(), "the path reads back");
  Require(again.GetCommandParameters() == parser.GetCommandParameters(), "parameters read back");
  Require(again.GetParseErrors().empty(), "a written command line has no mistakes");
}

// The errors quote each token once at most, with up to 60 bytes around it.
void RequireSmallErrors(OptionParser& parser, const std::vector<std::string>& tokens) {
  parser.ProcessCommandArguments();
  std::size_t given = 0;
  for (const std::string& token : tokens) {
    given += token.size() + 60;
  }
  std::size_t size = 0;
  for (const std::string& error : parser.GetParseErrors()) {
    size += error.size();
  }
  Require(size <= given + 60, "errors are not much longer than what was given");
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  FuzzInput input(data, size);
  std::vector<std::string> tokens;
  while (!input.IsEmpty()) {
    tokens.emplace_back(input.TakeText());
  }
  OptionParser bare;
  bare.ParseVector(tokens);
  RequireReadsSlowly(bare, tokens);
  RequireReadsBack(bare);

  static const std::shared_ptr<InputSpec> spec = MakeInputSpec();
  OptionParser declared;
  declared.ParseVector(tokens);
  declared.SetInputSpec(spec);
  RequireSmallErrors(declared, tokens);
  Require(declared.GetCommandParameters() == bare.GetCommandParameters(),
          "a declaration adds mistakes and changes no parameter");
  return 0;
}

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: one token per line.
//
// The parser agrees with a simple reference parser. A command line that is parsed, written and
// parsed again stays the same.

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
#include "Usage.h"
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
  // No secret parameter: the parser would read it from this program's standard input.
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

// Parses a command line without a specification of its parameters.
class ReferenceParser {
 public:
  explicit ReferenceParser(std::vector<std::string> tokens) : tokens_(std::move(tokens)) {
    dispatcherOptions = TakeOptions();
    while (!IsAtEnd() && !ParseOption(tokens_[next_])) {
      path.push_back(tokens_[next_++]);
    }
    parameters = TakeOptions();
    extraWordCount = tokens_.size() - next_;
  }

  Pairs dispatcherOptions;
  std::list<std::string> path;
  Pairs parameters;
  std::size_t extraWordCount = 0;

 private:
  struct Option {
    std::string name;
    std::string value;
  };

  // Returns nothing when the token is not an option.
  static std::optional<Option> ParseOption(const std::string& token) {
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
      std::optional<Option> option = ParseOption(tokens_[next_]);
      if (!option) {
        break;
      }
      ++next_;
      if (option->value.empty() && !IsAtEnd() && !ParseOption(tokens_[next_])) {
        option->value = tokens_[next_++];
      }
      pairs.emplace_back(option->name, option->value);
    }
    return pairs;
  }

  const std::vector<std::string> tokens_;
  std::size_t next_ = 0;
};

void RequireMatchesReference(OptionParser& parser, const std::vector<std::string>& tokens) {
  const ReferenceParser reference(tokens);
  Require(parser.GetDispatcherParameters() == reference.dispatcherOptions,
          "the dispatcher options are those of the reference parser");
  Require(parser.GetCommandPath() == reference.path, "the path is that of the reference parser");
  Require(parser.GetCommandParameters() == reference.parameters,
          "the parameters are those of the reference parser");
  Require(parser.GetParseErrors().size() == (reference.extraWordCount == 0 ? 0 : 1),
          "extra words are the only parse error");
}

// Appends the options as they can be typed. An empty value, or the value of a short name, is a
// token of its own.
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
  Require(again.GetParseErrors().empty(), "a written command line has no parse errors");
}

// The errors quote each token at most once and add at most 60 bytes to it.
void RequireSmallErrors(OptionParser& parser, const std::vector<std::string>& tokens) {
  parser.ProcessCommandArguments();
  std::size_t limit = 60;
  for (const std::string& token : tokens) {
    limit += token.size() + 60;
  }
  std::size_t size = 0;
  for (const std::string& error : parser.GetParseErrors()) {
    size += error.size();
  }
  Require(size <= limit, "errors are not much longer than the input");
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
  static const std::shared_ptr<InputSpec> spec = MakeInputSpec();
  const Usage usage(size);
  OptionParser bare;
  bare.ParseVector(tokens);
  OptionParser declared;
  declared.ParseVector(tokens);
  declared.SetInputSpec(spec);
  usage.Check();
  RequireMatchesReference(bare, tokens);
  RequireReadsBack(bare);
  RequireSmallErrors(declared, tokens);
  Require(declared.GetCommandParameters() == bare.GetCommandParameters(),
          "a specification adds errors but changes no parameter");
  return 0;
}

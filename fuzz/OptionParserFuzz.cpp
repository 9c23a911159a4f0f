// Input: one token a line.
//
// What the parser makes of a command line is written as a command line again, and must be read as
// the same.

#include "kestrel/autocli/OptionParser.h"

#include <cstddef>
#include <cstdint>
#include <memory>
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

std::size_t CountBytes(const Pairs& pairs) {
  std::size_t count = 0;
  for (const auto& [name, value] : pairs) {
    count += name.size() + value.size();
  }
  return count;
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

void RequireNothingMadeUp(OptionParser& parser, const std::vector<std::string>& tokens) {
  std::size_t given = 0;
  for (const std::string& token : tokens) {
    given += token.size();
  }
  std::size_t taken =
      CountBytes(parser.GetDispatcherParameters()) + CountBytes(parser.GetCommandParameters());
  for (const std::string& word : parser.GetCommandPath()) {
    taken += word.size();
  }
  Require(taken <= given, "what is read is not longer than what was given");
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
  RequireNothingMadeUp(bare, tokens);
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

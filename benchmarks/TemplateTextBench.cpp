// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What does it cost to insert parameters into a template, compared with regular expressions?

#include <benchmark/benchmark.h>

#include <boost/regex.hpp>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::Benchmarks {
namespace {

using AutoCli::ExtensionCommand;
using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

/// Returns a line of about a hundred bytes with every kind of marker, repeated to at least `size`
/// bytes.
std::string MakeTemplate(std::int64_t size) {
  const std::string line =
      "list '$val{name}'$if{all, --all}$if{unused, --unused} $list{ids,',',true}"
      "$multilist{tags,-t,false}\n";
  std::string text;
  while (text.size() < static_cast<std::size_t>(size)) {
    text += line;
  }
  return text;
}

std::shared_ptr<InputSpec> MakeInputSpec() {
  auto spec = InputSpec::New();
  spec->AddParameter(ParameterSpec::New("all", ParameterType::Flag));
  spec->AddParameter(ParameterSpec::New("ids", ParameterType::StringList));
  spec->AddParameter(ParameterSpec::New("name", ParameterType::String));
  spec->AddParameter(ParameterSpec::New("tags", ParameterType::StringList));
  spec->AddParameter(ParameterSpec::New("unused", ParameterType::String));
  return spec;
}

std::shared_ptr<Input> MakeInput(const std::shared_ptr<InputSpec>& spec) {
  auto input = Input::New();
  input->SetInputSpec(spec);
  input->AddParameter("all", "");
  input->AddParameter("ids", std::vector<std::string>{"first", "second"});
  input->AddParameter("name", "it's a name");
  input->AddParameter("tags", std::vector<std::string>{"one", "two & three"});
  return input;
}

// The contenders.

class OneScan {
 public:
  OneScan(const std::string& text, const std::shared_ptr<InputSpec>& spec)
      : command_(ExtensionCommand::New()) {
    command_->SetInputSpec(spec);
    command_->SetExecuteCommand(text);
  }
  std::string Substitute(const std::shared_ptr<Input>& input) const {
    return command_->SubstituteInput(input, false);
  }

 private:
  const std::shared_ptr<ExtensionCommand> command_;
};

/// The same language, implemented by regular expressions that are compiled for each parameter.
class Expressions {
 public:
  Expressions(const std::string& text, const std::shared_ptr<InputSpec>& spec)
      : text_(text), spec_(spec) {}

  std::string Substitute(const std::shared_ptr<Input>& input) const {
    std::string text = text_;
    for (const auto& parameter : spec_->GetParameters()) {
      if (input->HasParameter(parameter->GetName())) {
        Apply(parameter->GetName(), *input, text);
      }
    }
    static const boost::regex unused(R"(\$if\{[a-z0-9-]+,.+?\})");
    return boost::regex_replace(text, unused, "", boost::regex_constants::format_literal);
  }

 private:
  static void Apply(const std::string& name, const Input& input, std::string& text) {
    boost::smatch match;
    const std::string value = R"(\$val\{)" + name + R"(\})";
    if (boost::regex_match(text, match, boost::regex("(.*)" + value + "(.*)"))) {
      const bool isQuoted = match[1].length() > 0 && *(match[1].second - 1) == '\'';
      Replace(value,
              isQuoted ? ExtensionCommand::SanitizeChar(input.GetParameter(name), '\'')
                       : ExtensionCommand::SanitizeInput(input.GetParameter(name)),
              text);
    }
    text = boost::regex_replace(text, boost::regex(R"(\$if\{)" + name + R"(,(.+?)\})"), "$1");
    const std::string list = R"(\$list\{)" + name + R"(,'(.?)',(true|false)\})";
    if (boost::regex_match(text, match, boost::regex(".*" + list + ".*"))) {
      const std::string joined = input.GetParameterListAsString(name, *match[1].first, false);
      Replace(list, '"' + ExtensionCommand::SanitizeInput(joined) + '"', text);
    }
    const std::string multiList = R"(\$multilist\{)" + name + R"(,(.+?),(true|false)\})";
    if (boost::regex_match(text, match, boost::regex(".*" + multiList + ".*"))) {
      std::vector<std::string> values;
      input.GetParameterList(name, values);
      std::string joined;
      for (const std::string& each : values) {
        joined += " " + match[1].str() + " " + ExtensionCommand::SanitizeInput(each);
      }
      Replace(multiList, joined, text);
    }
  }

  static void Replace(const std::string& expression, const std::string& by, std::string& text) {
    text = boost::regex_replace(text, boost::regex(expression), by,
                                boost::regex_constants::format_literal);
  }

  const std::string text_;
  const std::shared_ptr<InputSpec> spec_;
};

// The benchmarks.

template <typename Contender>
void BM_TemplateSubstitute(benchmark::State& state) {
  const auto spec = MakeInputSpec();
  const auto input = MakeInput(spec);
  const std::string text = MakeTemplate(state.range(0));
  const Contender contender(text, spec);
  if (contender.Substitute(input) != OneScan(text, spec).Substitute(input)) {
    return state.SkipWithError("the contenders do not agree");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(contender.Substitute(input));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

/// Returns nested blocks. Removing a block opens the one around it, so there is a pass for each
/// level, and the time grows with the square of the size.
std::string MakeNest(std::int64_t size) {
  constexpr std::int64_t kBytesOfALevel = 16;
  std::string text;
  for (std::int64_t level = size / kBytesOfALevel; level > 0; --level) {
    text += "{ ";
  }
  for (std::int64_t level = size / kBytesOfALevel; level > 0; --level) {
    text += "$if{no,x} } {}";
  }
  return text;
}

void BM_TemplateNestedConditionals(benchmark::State& state) {
  const auto spec = MakeInputSpec();
  const auto input = MakeInput(spec);
  const std::string text = MakeNest(state.range(0));
  const OneScan contender(text, spec);
  if (contender.Substitute(input).find('$') != std::string::npos) {
    return state.SkipWithError("a conditional was left");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(contender.Substitute(input));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_TemplateNestedConditionals)->RangeMultiplier(10)->Range(100, 10000);
BENCHMARK(BM_TemplateSubstitute<OneScan>)->Arg(100)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK(BM_TemplateSubstitute<Expressions>)->Arg(100)->RangeMultiplier(10)->Range(1000, 1000000);

}  // namespace
}  // namespace Kestrel::Benchmarks

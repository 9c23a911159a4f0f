// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of one call in a large tree of commands, compared with a general command-line parser.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#ifdef KESTREL_HAS_CLI11
#include <CLI/CLI.hpp>
#endif

#include "benchmarks/CommandTree.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::Benchmarks {
namespace {

using AutoCli::OptionParser;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

void BM_CommandCall(benchmark::State& state) {
  AutoCli::Dispatcher dispatcher;
  AddCommands(dispatcher, static_cast<int>(state.range(0)));
  const auto words = MakeCall(static_cast<int>(state.range(0)));
  const auto argv = PointersTo(words);
  for (auto _ : state) {
    if (!Call(dispatcher, argv)) {
      state.SkipWithError("the call failed");
      break;
    }
  }
}
BENCHMARK(BM_CommandCall)->Arg(20)->Arg(10000);

#ifdef KESTREL_HAS_CLI11
struct Cli11Values {
  std::vector<std::string> texts = std::vector<std::string>(kParameters);
  std::vector<std::int64_t> numbers = std::vector<std::int64_t>(kParameters);
};

/// Builds the same tree with CLI11. Only the called command has options, which favours CLI11.
std::unique_ptr<CLI::App> MakeCli11Tree(int commands, Cli11Values& values) {
  auto app = std::make_unique<CLI::App>();
  CLI::App* group = nullptr;
  CLI::App* called = nullptr;
  for (int i = 0; i < commands; ++i) {
    if (i % kCommandsPerNamespace == 0) {
      group = app->add_subcommand(NamespaceName(i / kCommandsPerNamespace));
    }
    CLI::App* const command = group->add_subcommand(CommandName(i));
    called = i == commands / 2 ? command : called;
  }
  for (std::size_t i = 0; i < kParameters; ++i) {
    const std::string name = "--" + ParameterName(i);
    if (i % 2 == 0) {
      called->add_option(name, values.texts[i]);
    } else {
      called->add_option(name, values.numbers[i]);
    }
  }
  return app;
}

/// Builds a new tree for each call, because a tree keeps the values that it has parsed.
void BM_CommandCallCli11(benchmark::State& state) {
  const int commands = static_cast<int>(state.range(0));
  const auto words = MakeCall(commands);
  const auto argv = PointersTo(words);
  for (auto _ : state) {
    state.PauseTiming();
    Cli11Values values;
    auto app = MakeCli11Tree(commands, values);
    state.ResumeTiming();
    app->parse(static_cast<int>(argv.size()), argv.data());
    benchmark::DoNotOptimize(values);
    state.PauseTiming();
    app.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_CommandCallCli11)->Arg(20)->Arg(10000);

#endif

// How the cost of an operation grows. The last word of a name says what the size counts.

void BM_InputSpecAddParameters(benchmark::State& state) {
  std::vector<std::shared_ptr<ParameterSpec>> parameters;
  for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)); ++i) {
    parameters.push_back(ParameterSpec::New(ParameterName(i), ParameterType::String));
  }
  for (auto _ : state) {
    const auto spec = InputSpec::New();
    for (const auto& parameter : parameters) {
      spec->AddParameter(parameter);
    }
    benchmark::DoNotOptimize(spec);
  }
}
BENCHMARK(BM_InputSpecAddParameters)->RangeMultiplier(4)->Range(1 << 10, 1 << 14);

void BM_InputSpecValidateListValues(benchmark::State& state) {
  const auto spec = InputSpec::New();
  spec->AddParameter(ParameterSpec::New("values", ParameterType::IntList));
  const auto input = CallSpec::Input::New();
  for (int i = 0; i < state.range(0); ++i) {
    input->AddParameter("values", std::to_string(i));
  }
  input->SetInputSpec(spec);
  for (auto _ : state) {
    const auto output = CallSpec::Output::New();
    benchmark::DoNotOptimize(spec->Validate(input, output));
  }
}
BENCHMARK(BM_InputSpecValidateListValues)->RangeMultiplier(8)->Range(1 << 10, 1 << 20);

void BM_InputSpecValidateErrors(benchmark::State& state) {
  const auto spec = InputSpec::New();
  spec->AddParameter(ParameterSpec::New("values", ParameterType::IntList));
  const auto input = CallSpec::Input::New();
  for (int i = 0; i < state.range(0); ++i) {
    input->AddParameter("values", "no number");
  }
  input->SetInputSpec(spec);
  for (auto _ : state) {
    const auto output = CallSpec::Output::New();
    spec->Validate(input, output);
    benchmark::DoNotOptimize(output->GetErrors().size());
  }
}
BENCHMARK(BM_InputSpecValidateErrors)->RangeMultiplier(8)->Range(1 << 10, 1 << 20);

void BM_NamespaceAddChildren(benchmark::State& state) {
  std::vector<std::string> names;
  for (int i = 0; i < state.range(0); ++i) {
    names.push_back(NamespaceName(i));
  }
  for (auto _ : state) {
    AutoCli::Dispatcher dispatcher;
    const auto root = dispatcher.GetRootNamespace();
    for (const std::string& name : names) {
      root->SubNamespace(name);
    }
    benchmark::DoNotOptimize(root);
  }
}
BENCHMARK(BM_NamespaceAddChildren)->RangeMultiplier(8)->Range(1 << 10, 1 << 16);

void BM_OptionParserTokens(benchmark::State& state) {
  std::string line = "command";
  for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)); ++i) {
    line += " --" + ParameterName(i) + "=value";
  }
  for (auto _ : state) {
    OptionParser parser;
    parser.ParseString(line);
    benchmark::DoNotOptimize(parser.GetCommandParameters().size());
  }
}
BENCHMARK(BM_OptionParserTokens)->RangeMultiplier(8)->Range(1 << 10, 1 << 19);

}  // namespace
}  // namespace Kestrel::Benchmarks

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of parsing, validating and dispatching a command line, without starting a process.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>

#include "kestrel/autocli/CliDispatcherHelpFormatter.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Benchmarks {
namespace {

using AutoCli::OptionParser;
using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

std::string ParameterName(int index) { return "parameter-" + std::to_string(index); }

/// Returns a command line with that many parameters.
std::string MakeLine(int parameters) {
  std::string line = "--formatter simple storage mount list";
  for (int i = 0; i < parameters; ++i) {
    line += " --" + ParameterName(i) + "=value-" + std::to_string(i);
  }
  return line;
}

void BM_OptionParserParseString(benchmark::State& state) {
  const std::string line = MakeLine(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    OptionParser parser;
    parser.ParseString(line);
    benchmark::DoNotOptimize(parser.GetCommandParameters());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(line.size()));
}
BENCHMARK(BM_OptionParserParseString)->Arg(2)->Arg(20)->Arg(200)->Arg(2000);

void BM_OptionParserLongValue(benchmark::State& state) {
  const std::string line =
      "command --text=" + std::string(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    OptionParser parser;
    parser.ParseString(line);
    benchmark::DoNotOptimize(parser.GetCommandParameters());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(line.size()));
}
BENCHMARK(BM_OptionParserLongValue)->Arg(1000)->Arg(1000000);

void BM_InputSpecValidate(benchmark::State& state) {
  const auto spec = InputSpec::New();
  for (int i = 0; i < state.range(0); ++i) {
    spec->AddParameter(ParameterSpec::New(ParameterName(i), ParameterType::String));
  }
  for (auto _ : state) {
    const auto input = Input::New();
    for (int i = 0; i < state.range(0); ++i) {
      input->AddParameter(ParameterName(i), "value");
    }
    input->SetInputSpec(spec);
    const auto output = CallSpec::Output::New();
    benchmark::DoNotOptimize(spec->Validate(input, output));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_InputSpecValidate)->Arg(2)->Arg(20)->Arg(200);

std::shared_ptr<MetaStruct> MakeNode(const std::string& name) {
  auto node = MetaStruct::New("NamespaceNode");
  node->SetField("Name", name);
  node->SetField("Description", "What is found below this name, in a line of usual length.");
  node->SetField("Type", "Namespace");
  return node;
}

void BM_RootListing(benchmark::State& state) {
  const auto nodes = MetaList::New(MetaType::Struct, MakeNode(""));
  for (int i = 0; i < state.range(0); ++i) {
    nodes->Add(MakeNode("namespace" + std::to_string(i)));
  }
  auto listing = MetaStruct::New("VexilCommandPrint");
  listing->SetField("Dispatcher", "vexil");
  listing->SetField("Path", MetaList::New(MetaType::String));
  listing->SetField("NamespaceNodes", nodes);
  const auto output = CallSpec::Output::New();
  output->SetRootObject(listing);
  for (auto _ : state) {
    std::ostringstream out;
    AutoCli::FormatParameters params;
    AutoCli::DisplayContext display = {80, 24};
    AutoCli::CliDispatcherHelpFormatter().Format(output, params, display, out);
    benchmark::DoNotOptimize(out);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_RootListing)->Arg(4)->Arg(100)->Arg(10000);

void BM_DispatcherMake(benchmark::State& state) {
  for (auto _ : state) {
    AutoCli::Dispatcher dispatcher;
    benchmark::DoNotOptimize(dispatcher.GetRootNamespace());
  }
}
BENCHMARK(BM_DispatcherMake);

void BM_DispatcherCommandList(benchmark::State& state) {
  AutoCli::Dispatcher dispatcher;
  for (auto _ : state) {
    const auto input = AutoCli::CommandInput::New();
    input->SetCommandPath({"vexil", "command", "list"});
    const auto output = AutoCli::CommandOutput::New();
    benchmark::DoNotOptimize(dispatcher.ExecuteCommand(input, output));
  }
}
BENCHMARK(BM_DispatcherCommandList);

}  // namespace
}  // namespace Kestrel::Benchmarks

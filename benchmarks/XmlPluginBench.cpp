// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What does it cost to load descriptors of ten commands each, compared with only parsing the files?

#include "kestrel/autocli/XmlPlugin.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#ifdef KESTREL_HAS_CLI11
#include <CLI/CLI.hpp>
#endif

#include "benchmarks/Descriptor.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::Benchmarks {
namespace {

using AutoCli::Namespace;
using AutoCli::XmlPlugin;

// What is done with each file. An object of each class is made before the first file and destroyed
// after the last.

class Trees {
 public:
  static void Take(const std::string& path) { xmlFreeDoc(xmlReadFile(path.c_str(), nullptr, 0)); }
};

class Plugins {
 public:
  static void Take(const std::string& path) { XmlPlugin::New(path)->Initialize(); }
};

class RegisteredPlugins {
 public:
  void Take(const std::string& path) {
    plugins_.push_back(XmlPlugin::New(path));
    plugins_.back()->Initialize();
    plugins_.back()->RegisterNamespaces(root_);
  }

 private:
  const std::shared_ptr<Namespace> root_ = Namespace::New();
  std::vector<std::shared_ptr<XmlPlugin>> plugins_;
};

template <typename Contender>
void BM_DescriptorsTake(benchmark::State& state) {
  const DescriptorFolder folder(state.range(0));
  for (auto _ : state) {
    Contender contender;
    for (const std::string& file : folder.GetFiles()) {
      contender.Take(file);
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_DescriptorsTake<Plugins>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(BM_DescriptorsTake<RegisteredPlugins>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(BM_DescriptorsTake<Trees>)->RangeMultiplier(10)->Range(1, 1000);

#ifdef KESTREL_HAS_CLI11
/// Declares with CLI11 the commands of a hundred such descriptors, with the same parameters and,
/// but for the regular expression, the same constraints.
void BM_Cli11MakeDescriptorCommands(benchmark::State& state) {
  constexpr int kCommands = 1000;
  for (auto _ : state) {
    CLI::App app;
    std::vector<std::string> owners;
    std::string status;
    int limit = 0;
    for (int i = 0; i < kCommands; ++i) {
      CLI::App* const command =
          app.add_subcommand("list" + std::to_string(i), "List what the store holds.");
      command->add_option("-o,--owner", owners, "List what belongs to one of these owners only.");
      command->add_option("-s,--state", status, "List volumes in this state only.")
          ->required()
          ->check(CLI::IsMember({"online", "offline", "any"}));
      command->add_option("--limit", limit, "The most rows.")->check(CLI::Range(1, 1000));
    }
    benchmark::DoNotOptimize(app);
  }
}
BENCHMARK(BM_Cli11MakeDescriptorCommands);
#endif

}  // namespace
}  // namespace Kestrel::Benchmarks

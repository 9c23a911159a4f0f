// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What does the catalog of a tree cost, compared with loading the tree?

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "benchmarks/Descriptor.h"
#include "kestrel/autocli/Dispatcher.h"
#include "tools/catalog/CatalogJson.h"
#include "tools/catalog/ReadTree.h"

namespace Kestrel::Benchmarks {
namespace {

using AutoCli::Dispatcher;

void Load(Dispatcher& dispatcher, const DescriptorFolder& folder) {
  for (const std::string& file : folder.GetFiles()) {
    dispatcher.AddPlugin(file);
  }
}

/// A tree with the given number of commands, which must be a multiple of ten.
class LoadedTree {
 public:
  explicit LoadedTree(std::int64_t commands) : folder_(commands / 10) {
    Load(dispatcher_, folder_);
  }

  const Dispatcher& GetDispatcher() const { return dispatcher_; }

 private:
  DescriptorFolder folder_;
  Dispatcher dispatcher_;
};

void BM_CatalogLoadTree(benchmark::State& state) {
  const DescriptorFolder folder(state.range(0) / 10);
  for (auto _ : state) {
    Dispatcher dispatcher;
    Load(dispatcher, folder);
  }
}
BENCHMARK(BM_CatalogLoadTree)->Arg(10)->Arg(100)->Arg(1000);

void BM_CatalogReadTree(benchmark::State& state) {
  const LoadedTree tree(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Catalog::ReadTree(tree.GetDispatcher()));
  }
}
BENCHMARK(BM_CatalogReadTree)->Arg(10)->Arg(100)->Arg(1000);

void BM_CatalogReadTreeAndWriteJson(benchmark::State& state) {
  const LoadedTree tree(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Catalog::WriteJson(Catalog::ReadTree(tree.GetDispatcher())));
  }
}
BENCHMARK(BM_CatalogReadTreeAndWriteJson)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace
}  // namespace Kestrel::Benchmarks

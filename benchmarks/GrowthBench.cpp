// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// How the time grows with the work: twice the work should take at most twice the time.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <ostream>
#include <random>
#include <streambuf>
#include <string>
#include <vector>

#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/PythonFormatter.h"
#include "kestrel/autocli/SimpleFormatter.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/autocli/Util.h"
#include "kestrel/autocli/XmlFormatter.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Benchmarks {
namespace {

using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

// Reports the work of one round to growth.py: a number of fields, elements, levels or bytes.
void SetWork(benchmark::State& state, std::size_t work) {
  state.counters["work"] = static_cast<double>(work);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(work));
}

std::vector<std::string> MakeNames(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t index = 0; index < count; ++index) {
    names.push_back("field" + std::to_string(10000000 + index));
  }
  return names;
}

// Sets, looks up, prints and destroys the fields of a structure.
void UseFields(benchmark::State& state, const std::vector<std::string>& names) {
  for (auto _ : state) {
    const auto structure = MetaStruct::New("Record");
    for (const std::string& name : names) {
      structure->SetField(name, 5);
    }
    for (const std::string& name : names) {
      benchmark::DoNotOptimize(structure->GetField(name));
    }
    benchmark::DoNotOptimize(structure->ToString());
  }
  SetWork(state, names.size());
}

void BM_GrowthFieldsInOrder(benchmark::State& state) {
  UseFields(state, MakeNames(static_cast<std::size_t>(state.range(0))));
}

void BM_GrowthFieldsInNoOrder(benchmark::State& state) {
  std::vector<std::string> names = MakeNames(static_cast<std::size_t>(state.range(0)));
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  UseFields(state, names);
}

void BM_GrowthScalarElements(benchmark::State& state) {
  for (auto _ : state) {
    const auto list = MetaList::New(MetaType::Int);
    for (long value = 0; value < state.range(0); ++value) {
      list->Add(value);
    }
    benchmark::DoNotOptimize(list->ToString());
  }
  SetWork(state, static_cast<std::size_t>(state.range(0)));
}

std::shared_ptr<MetaStruct> MakeStruct(long value) {
  auto structure = MetaStruct::New("Record");
  structure->SetField("Name", "a name of many bytes");
  structure->SetField("Size", value);
  return structure;
}

void BM_GrowthStructElements(benchmark::State& state) {
  for (auto _ : state) {
    const auto list = MetaList::New(MetaType::Struct, MakeStruct(0));
    for (long value = 0; value < state.range(0); ++value) {
      list->Add(MakeStruct(value));
    }
    benchmark::DoNotOptimize(list->ToString());
  }
  SetWork(state, static_cast<std::size_t>(state.range(0)));
}

std::shared_ptr<MetaStruct> MakeNested(long depth) {
  auto structure = MakeStruct(0);
  for (long level = 1; level < depth; ++level) {
    auto outer = MetaStruct::New("Record");
    outer->SetField("Inner", structure);
    structure = std::move(outer);
  }
  return structure;
}

void BM_GrowthDepthOfValues(benchmark::State& state) {
  for (auto _ : state) {
    const auto structure = MakeNested(state.range(0));
    benchmark::DoNotOptimize(structure->IsSameStructure(structure, nullptr));
    benchmark::DoNotOptimize(structure->ToString());
  }
  SetWork(state, static_cast<std::size_t>(state.range(0)));
}

// Counts bytes without storing them, because storing them would dominate the measurement.
class ByteCount : public std::streambuf {
 public:
  std::size_t Count() const { return count_; }

 protected:
  std::streamsize xsputn(const char*, std::streamsize size) override {
    count_ += static_cast<std::size_t>(size);
    return size;
  }
  int_type overflow(int_type byte) override {
    ++count_;
    return traits_type::not_eof(byte);
  }

 private:
  std::size_t count_ = 0;
};

// Prints a value in each round and returns the number of bytes per round.
template <typename Formatter>
std::size_t Print(benchmark::State& state, const std::shared_ptr<MetaObject>& root) {
  const auto output = CallSpec::Output::New();
  output->SetRootObject(root);
  Formatter formatter;
  AutoCli::FormatParameters parameters;
  AutoCli::DisplayContext display{};
  std::size_t bytes = 0;
  for (auto _ : state) {
    ByteCount count;
    std::ostream out(&count);
    formatter.Format(output, parameters, display, out);
    bytes = count.Count();
  }
  return bytes;
}

// The work is the number of bytes written: with indentation, it grows with the square of the depth.
template <typename Formatter>
void BM_GrowthDepthOfOutput(benchmark::State& state) {
  SetWork(state, Print<Formatter>(state, MakeNested(state.range(0))));
}

void BM_GrowthColumnsOfATable(benchmark::State& state) {
  const std::vector<std::string> names = MakeNames(static_cast<std::size_t>(state.range(0)));
  const auto row = MetaStruct::New("Record");
  for (const std::string& name : names) {
    row->SetField(name, 5);
  }
  const auto list = MetaList::New(MetaType::Struct, row);
  list->Add(row);
  Print<AutoCli::TableFormatter>(state, list);
  SetWork(state, names.size());
}

// Words of 0 to 11 bytes, on a screen of 80 columns.
void BM_GrowthTextToFit(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  std::string text;
  for (std::size_t word = 0; text.size() < size; ++word) {
    text.append(word * 7919 % 12, 'w').append(1, ' ');
  }
  text.resize(size);
  for (auto _ : state) {
    ByteCount count;
    std::ostream out(&count);
    AutoCli::AutoCli_FitString(8, 80, text, false, out, true, 0, false);
    benchmark::DoNotOptimize(count.Count());
  }
  SetWork(state, size);
}

void ToAMillion(benchmark::internal::Benchmark* bench) {
  bench->RangeMultiplier(10)->Range(1000, 1000000);
}

void ToTenThousand(benchmark::internal::Benchmark* bench) {
  bench->Arg(100)->Arg(1000)->Arg(10000);
}

BENCHMARK(BM_GrowthFieldsInOrder)->Apply(ToAMillion);
BENCHMARK(BM_GrowthFieldsInNoOrder)->Apply(ToAMillion);
BENCHMARK(BM_GrowthScalarElements)->Apply(ToAMillion);
BENCHMARK(BM_GrowthStructElements)->Apply(ToAMillion);
BENCHMARK(BM_GrowthDepthOfValues)->Apply(ToTenThousand);
BENCHMARK_TEMPLATE(BM_GrowthDepthOfOutput, AutoCli::SimpleFormatter)->Apply(ToTenThousand);
BENCHMARK_TEMPLATE(BM_GrowthDepthOfOutput, AutoCli::XmlFormatter)->Apply(ToTenThousand);
BENCHMARK_TEMPLATE(BM_GrowthDepthOfOutput, AutoCli::JsonFormatter)->Apply(ToTenThousand);
BENCHMARK_TEMPLATE(BM_GrowthDepthOfOutput, AutoCli::PythonFormatter)->Apply(ToTenThousand);
BENCHMARK(BM_GrowthColumnsOfATable)->Apply(ToAMillion);
BENCHMARK(BM_GrowthTextToFit)->Apply(ToAMillion);

}  // namespace
}  // namespace Kestrel::Benchmarks

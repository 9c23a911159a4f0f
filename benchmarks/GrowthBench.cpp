// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// How the time grows with the work: doubling the one should double the other and no more.

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

// What one round works off, for growth.py: so many fields, elements or bytes.
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

// The whole life of a structure: its fields are set, looked up, printed and let go of.
void LiveWithFields(benchmark::State& state, const std::vector<std::string>& names) {
  for (auto _ : state) {
    const auto record = MetaStruct::New("Record");
    for (const std::string& name : names) {
      record->SetField(name, 5);
    }
    for (const std::string& name : names) {
      benchmark::DoNotOptimize(record->GetField(name));
    }
    benchmark::DoNotOptimize(record->ToString());
  }
  SetWork(state, names.size());
}

void BM_GrowthFieldsInOrder(benchmark::State& state) {
  LiveWithFields(state, MakeNames(static_cast<std::size_t>(state.range(0))));
}

void BM_GrowthFieldsInNoOrder(benchmark::State& state) {
  std::vector<std::string> names = MakeNames(static_cast<std::size_t>(state.range(0)));
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  LiveWithFields(state, names);
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

std::shared_ptr<MetaStruct> MakeRecord(long value) {
  auto record = MetaStruct::New("Record");
  record->SetField("Name", "a name of many bytes");
  record->SetField("Size", value);
  return record;
}

void BM_GrowthStructElements(benchmark::State& state) {
  for (auto _ : state) {
    const auto list = MetaList::New(MetaType::Struct, MakeRecord(0));
    for (long value = 0; value < state.range(0); ++value) {
      list->Add(MakeRecord(value));
    }
    benchmark::DoNotOptimize(list->ToString());
  }
  SetWork(state, static_cast<std::size_t>(state.range(0)));
}

std::shared_ptr<MetaStruct> MakeNested(long depth) {
  auto record = MakeRecord(0);
  for (long level = 1; level < depth; ++level) {
    auto outer = MetaStruct::New("Record");
    outer->SetField("Inner", record);
    record = std::move(outer);
  }
  return record;
}

void BM_GrowthDepthOfValues(benchmark::State& state) {
  for (auto _ : state) {
    const auto record = MakeNested(state.range(0));
    benchmark::DoNotOptimize(record->IsSameStructure(record, nullptr));
    benchmark::DoNotOptimize(record->ToString());
  }
  SetWork(state, static_cast<std::size_t>(state.range(0)));
}

// Counts bytes and keeps none: memory for them would be all that is measured.
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

// Prints a value again and again; gives the bytes that come out each time.
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

// Indentation makes the output of n levels n squared long, so the work is the bytes of output.
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

void ToAMillion(benchmark::internal::Benchmark* asked) {
  asked->RangeMultiplier(10)->Range(1000, 1000000);
}

void ToTenThousand(benchmark::internal::Benchmark* asked) {
  asked->Arg(100)->Arg(1000)->Arg(10000);
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

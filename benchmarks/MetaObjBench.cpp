// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of building a list of structures, storing it, looking up fields and destroying it,
// compared with the alternatives that a user has and with plain members.

#include <benchmark/benchmark.h>
#include <kestrel/metaobj/MetaBool.h>
#include <kestrel/metaobj/MetaInt.h>
#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaString.h>
#include <kestrel/metaobj/MetaStruct.h>

#include <map>
#include <memory>
#include <variant>

#include "benchmarks/FreshProcess.h"
#include "benchmarks/Records.h"
#ifdef KESTREL_HAS_RAPIDJSON
#include "benchmarks/RapidJsonRecords.h"
#endif

namespace {

using Kestrel::Benchmarks::Cost;
using Kestrel::Benchmarks::HeapBytes;
using Kestrel::Benchmarks::InFreshProcess;
using Kestrel::Benchmarks::MakeList;
using Kestrel::Benchmarks::MakeRecords;
using Kestrel::Benchmarks::ProcessSeconds;
using Kestrel::Benchmarks::Record;
using namespace Kestrel::MetaObj;  // NOLINT: the names under test

struct Names {
  std::string name = "Name";
  std::string size = "Size";
  std::string isEnabled = "Enabled";
  std::string path = "Path";
  std::string count = "Count";
};

// The contenders. Each builds all records; LookUp adds up the fields of one structure.

class MetaRecords {
 public:
  void Build(const std::vector<Record>& records) { list_ = MakeList(records); }

  long LookUp(std::size_t index, const Names& names) const {
    const auto& structure = static_cast<const MetaStruct&>(*list_->GetObjects()[index]);
    const auto* name = structure.FindField(names.name);
    const auto* size = structure.FindField(names.size);
    const auto* isEnabled = structure.FindField(names.isEnabled);
    const auto* path = structure.FindField(names.path);
    const auto* count = structure.FindField(names.count);
    return static_cast<long>(static_cast<const MetaString&>(*name).GetValue().size() +
                             static_cast<const MetaString&>(*path).GetValue().size()) +
           static_cast<const MetaInt&>(*size).GetValue() +
           static_cast<const MetaInt&>(*count).GetValue() +
           (static_cast<const MetaBool&>(*isEnabled).GetValue() ? 1 : 0);
  }

  std::string Print() const { return list_->ToString(); }

 private:
  std::shared_ptr<MetaList> list_;
};

class PlainRecords {
 public:
  void Build(const std::vector<Record>& records) {
    for (const Record& record : records) {
      records_.push_back(record);
    }
  }

  long LookUp(std::size_t index, const Names&) const {
    const Record& record = records_[index];
    return static_cast<long>(record.name.size() + record.path.size()) + record.size + record.count +
           (record.isEnabled ? 1 : 0);
  }

 private:
  std::vector<Record> records_;
};

class MapRecords {
 public:
  void Build(const std::vector<Record>& records) {
    for (const Record& record : records) {
      std::map<std::string, Value> value;
      value["Name"] = record.name;
      value["Size"] = record.size;
      value["Enabled"] = record.isEnabled;
      value["Path"] = record.path;
      value["Count"] = static_cast<long>(record.count);
      records_.push_back(std::move(value));
    }
  }

  long LookUp(std::size_t index, const Names& names) const {
    const auto& record = records_[index];
    return static_cast<long>(std::get<std::string>(record.find(names.name)->second).size() +
                             std::get<std::string>(record.find(names.path)->second).size()) +
           std::get<long>(record.find(names.size)->second) +
           std::get<long>(record.find(names.count)->second) +
           (std::get<bool>(record.find(names.isEnabled)->second) ? 1 : 0);
  }

 private:
  using Value = std::variant<bool, long, std::string>;
  std::vector<std::map<std::string, Value>> records_;
};

#ifdef KESTREL_HAS_RAPIDJSON

template <typename Allocator>
class RapidRecords {
 public:
  void Build(const std::vector<Record>& records) {
    document_ = std::make_unique<Document>();
    Kestrel::Benchmarks::BuildRapidJson(records, *document_);
  }

  long LookUp(std::size_t index, const Names& names) const {
    const Value& record = (*document_)[static_cast<rapidjson::SizeType>(index)];
    return static_cast<long>(Find(record, names.name).GetStringLength() +
                             Find(record, names.path).GetStringLength()) +
           Find(record, names.size).GetInt64() + Find(record, names.count).GetInt() +
           (Find(record, names.isEnabled).GetBool() ? 1 : 0);
  }

 private:
  using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Allocator>;
  using Value = typename Document::ValueType;

  static const Value& Find(const Value& record, const std::string& name) {
    const Value key(rapidjson::StringRef(name.data(), name.size()));
    return record.FindMember(key)->value;
  }

  std::unique_ptr<Document> document_;
};

using RapidPoolRecords = RapidRecords<rapidjson::MemoryPoolAllocator<>>;
using RapidHeapRecords = RapidRecords<rapidjson::CrtAllocator>;

#endif

// The benchmarks.

template <typename Contender>
Cost BuildAndDestroy(const std::vector<Record>& records) {
  Cost cost;
  auto contender = std::make_unique<Contender>();
  const double before = HeapBytes();
  const double start = ProcessSeconds();
  contender->Build(records);
  cost.buildSeconds = ProcessSeconds() - start;
  cost.heapBytes = HeapBytes() - before;
  const double middle = ProcessSeconds();
  contender.reset();
  cost.destroySeconds = ProcessSeconds() - middle;
  return cost;
}

template <typename Contender>
void BM_RecordsBuild(benchmark::State& state) {
  const std::vector<Record> records = MakeRecords(static_cast<std::size_t>(state.range(0)));
  Cost cost;
  for (auto _ : state) {
    cost = InFreshProcess([&records] { return BuildAndDestroy<Contender>(records); });
    state.SetIterationTime(cost.buildSeconds);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["bytes"] = cost.heapBytes / static_cast<double>(state.range(0));
}

template <typename Contender>
void BM_RecordsDestroy(benchmark::State& state) {
  const std::vector<Record> records = MakeRecords(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    const Cost cost = InFreshProcess([&records] { return BuildAndDestroy<Contender>(records); });
    state.SetIterationTime(cost.destroySeconds);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Contender>
void BM_RecordsLookUp(benchmark::State& state) {
  const std::vector<Record> records = MakeRecords(static_cast<std::size_t>(state.range(0)));
  Contender contender;
  contender.Build(records);
  const Names names;
  for (auto _ : state) {
    long sum = 0;
    for (std::size_t index = 0; index < records.size(); ++index) {
      sum += contender.LookUp(index, names);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_RecordsPrint(benchmark::State& state) {
  MetaRecords contender;
  contender.Build(MakeRecords(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    benchmark::DoNotOptimize(contender.Print());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(1000)->Arg(100000)->Arg(1000000)->UseManualTime();
}

#define KESTREL_ADD_BENCHMARKS(contender)                \
  BENCHMARK(BM_RecordsBuild<contender>)->Apply(Sizes);   \
  BENCHMARK(BM_RecordsDestroy<contender>)->Apply(Sizes); \
  BENCHMARK(BM_RecordsLookUp<contender>)->Arg(1000)->Arg(100000)

KESTREL_ADD_BENCHMARKS(MetaRecords);
KESTREL_ADD_BENCHMARKS(PlainRecords);
KESTREL_ADD_BENCHMARKS(MapRecords);
#ifdef KESTREL_HAS_RAPIDJSON
KESTREL_ADD_BENCHMARKS(RapidPoolRecords);
KESTREL_ADD_BENCHMARKS(RapidHeapRecords);
#endif
BENCHMARK(BM_RecordsPrint)->Arg(1000)->Arg(100000);

}  // namespace

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What does it cost to build rows of five fields and to print them to a pipe, in a process of its
// own, beside another library that does both. The one who reads the pipe is not counted.

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/FreshProcess.h"
#include "benchmarks/Records.h"
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/PythonFormatter.h"
#include "kestrel/autocli/SimpleFormatter.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/autocli/XmlFormatter.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaList.h"

#ifdef KESTREL_HAS_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/filewritestream.h>
#include <rapidjson/prettywriter.h>
#endif

namespace Kestrel::Benchmarks {
namespace {

/// A pipe whose other end is read by a process of its own, until the pipe is closed.
class DrainedPipe {
 public:
  DrainedPipe() {
    std::array<int, 2> ends;
    if (pipe(ends.data()) != 0) {
      throw std::runtime_error("pipe failed");
    }
    reader_ = fork();
    if (reader_ == 0) {
      close(ends[1]);
      std::array<char, 64 * 1024> buffer;
      while (read(ends[0], buffer.data(), buffer.size()) > 0) {
      }
      _exit(0);
    }
    close(ends[0]);
    descriptor_ = ends[1];
  }

  ~DrainedPipe() {
    close(descriptor_);
    waitpid(reader_, nullptr, 0);
  }

  DrainedPipe(const DrainedPipe&) = delete;
  DrainedPipe& operator=(const DrainedPipe&) = delete;

  std::string GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  pid_t reader_;
  int descriptor_;
};

// The contenders.

template <typename Formatter>
struct MetaRows {
  static void BuildAndPrint(const std::vector<Record>& records, const std::string& path) {
    const auto output = CallSpec::Output::New();
    output->SetRootObject(MakeList(records));
    std::ofstream out(path);
    AutoCli::FormatParameters params;
    AutoCli::DisplayContext display;
    Formatter().Format(output, params, display, out);
  }
};

#ifdef KESTREL_HAS_RAPIDJSON
/// Names and texts are copied, as the values above copy them.
struct RapidRows {
  static void BuildAndPrint(const std::vector<Record>& records, const std::string& path) {
    using rapidjson::Value;
    rapidjson::Document document;
    document.SetArray();
    auto& allocator = document.GetAllocator();
    const auto makeText = [&allocator](const std::string& text) {
      return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
    };
    for (const Record& record : records) {
      Value value(rapidjson::kObjectType);
      value.AddMember(makeText("Name"), makeText(record.name), allocator);
      value.AddMember(makeText("Size"), Value(static_cast<std::int64_t>(record.size)), allocator);
      value.AddMember(makeText("Enabled"), Value(record.isEnabled), allocator);
      value.AddMember(makeText("Path"), makeText(record.path), allocator);
      value.AddMember(makeText("Count"), Value(record.count), allocator);
      document.PushBack(value, allocator);
    }
    std::FILE* const file = std::fopen(path.c_str(), "w");
    std::vector<char> buffer(32 * 1024);
    rapidjson::FileWriteStream stream(file, buffer.data(), buffer.size());
    rapidjson::PrettyWriter<rapidjson::FileWriteStream> writer(stream);
    writer.SetIndent(' ', 3);
    document.Accept(writer);
    stream.Flush();
    std::fclose(file);
  }
};
#endif

// The question.

template <typename Contender>
void BM_BuildAndPrintToPipe(benchmark::State& state) {
  const std::vector<Record> records = MakeRecords(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    const Cost cost = InFreshProcess([&records] {
      const DrainedPipe drained;
      Cost spent;
      const double start = ProcessSeconds();
      Contender::BuildAndPrint(records, drained.GetPath());
      spent.buildSeconds = ProcessSeconds() - start;
      return spent;
    });
    state.SetIterationTime(cost.buildSeconds);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define KESTREL_ASK_OF(...)                               \
  BENCHMARK_TEMPLATE(BM_BuildAndPrintToPipe, __VA_ARGS__) \
      ->Arg(1000)                                         \
      ->Arg(100000)                                       \
      ->Arg(1000000)                                      \
      ->UseManualTime()

KESTREL_ASK_OF(MetaRows<AutoCli::TableFormatter>);
KESTREL_ASK_OF(MetaRows<AutoCli::SimpleFormatter>);
KESTREL_ASK_OF(MetaRows<AutoCli::XmlFormatter>);
KESTREL_ASK_OF(MetaRows<AutoCli::JsonFormatter>);
KESTREL_ASK_OF(MetaRows<AutoCli::PythonFormatter>);
#ifdef KESTREL_HAS_RAPIDJSON
KESTREL_ASK_OF(RapidRows);
#endif

}  // namespace
}  // namespace Kestrel::Benchmarks

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of building rows of five fields and printing them to a pipe, in a new process, compared
// with another library that does both. The cost of reading the pipe is not included.

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
#ifdef KESTREL_HAS_RAPIDJSON
#include "benchmarks/RapidJsonRecords.h"
#endif
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/PythonFormatter.h"
#include "kestrel/autocli/SimpleFormatter.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/autocli/XmlFormatter.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaList.h"

#ifdef KESTREL_HAS_RAPIDJSON
#include <rapidjson/filewritestream.h>
#include <rapidjson/prettywriter.h>
#endif

namespace Kestrel::Benchmarks {
namespace {

/// A pipe that a child process reads until it is closed.
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
struct RapidRows {
  static void BuildAndPrint(const std::vector<Record>& records, const std::string& path) {
    rapidjson::Document document;
    BuildRapidJson(records, document);
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

#define KESTREL_ADD_BENCHMARK(...)                        \
  BENCHMARK_TEMPLATE(BM_BuildAndPrintToPipe, __VA_ARGS__) \
      ->Arg(1000)                                         \
      ->Arg(100000)                                       \
      ->Arg(1000000)                                      \
      ->UseManualTime()

KESTREL_ADD_BENCHMARK(MetaRows<AutoCli::TableFormatter>);
KESTREL_ADD_BENCHMARK(MetaRows<AutoCli::SimpleFormatter>);
KESTREL_ADD_BENCHMARK(MetaRows<AutoCli::XmlFormatter>);
KESTREL_ADD_BENCHMARK(MetaRows<AutoCli::JsonFormatter>);
KESTREL_ADD_BENCHMARK(MetaRows<AutoCli::PythonFormatter>);
#ifdef KESTREL_HAS_RAPIDJSON
KESTREL_ADD_BENCHMARK(RapidRows);
#endif

}  // namespace
}  // namespace Kestrel::Benchmarks

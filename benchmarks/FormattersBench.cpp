// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of formatting rows of five fields, into a string and into /dev/null, compared with
// hand-written stream operators, with other libraries, and with copying the same text in pieces.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/Records.h"
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/PythonFormatter.h"
#include "kestrel/autocli/SimpleFormatter.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/autocli/XmlFormatter.h"
#include "kestrel/callspec/Output.h"
#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/ExactFormatter.h"

#ifdef KESTREL_HAS_LIBYAML
#include <yaml.h>
#endif
#ifdef KESTREL_HAS_NLOHMANN_JSON
#include <nlohmann/json.hpp>
#endif
#ifdef KESTREL_HAS_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef KESTREL_HAS_RAPIDJSON
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#endif

namespace Kestrel::Benchmarks {
namespace {

std::shared_ptr<CallSpec::Output> MakeOutput(std::size_t count) {
  const auto output = CallSpec::Output::New();
  output->SetRootObject(MakeList(MakeRecords(count)));
  return output;
}

void Sizes(benchmark::internal::Benchmark* bench) { bench->Arg(1000)->Arg(100000)->Arg(1000000); }

template <typename Print>
void IntoString(benchmark::State& state, const Print& print) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    std::ostringstream out;
    print(out);
    bytes = static_cast<std::size_t>(out.tellp());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Print>
void IntoNothing(benchmark::State& state, const Print& print) {
  std::ostringstream text;
  print(text);
  std::ofstream out("/dev/null");
  for (auto _ : state) {
    print(out);
    out.flush();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.tellp()));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Formatter>
auto Printing(const std::shared_ptr<CallSpec::Output>& output) {
  return [output](std::ostream& out) {
    AutoCli::FormatParameters params;
    AutoCli::DisplayContext display;
    Formatter().Format(output, params, display, out);
  };
}

template <typename Formatter>
void BM_FormatIntoString(benchmark::State& state) {
  IntoString(state, Printing<Formatter>(MakeOutput(static_cast<std::size_t>(state.range(0)))));
}

template <typename Formatter>
void BM_FormatIntoNothing(benchmark::State& state) {
  IntoNothing(state, Printing<Formatter>(MakeOutput(static_cast<std::size_t>(state.range(0)))));
}

/// Prints a similar table with stream operators, from plain records.
auto PrintingByStream(std::size_t count) {
  return [records = MakeRecords(count)](std::ostream& out) {
    for (const Record& record : records) {
      out << std::left << std::setw(14) << record.name << std::right << std::setw(20) << record.size
          << "  " << std::left << std::setw(9) << (record.isEnabled ? "true" : "false")
          << std::setw(42) << record.path << record.count << '\n';
    }
  };
}

void BM_StreamIntoString(benchmark::State& state) {
  IntoString(state, PrintingByStream(static_cast<std::size_t>(state.range(0))));
}

void BM_StreamIntoNothing(benchmark::State& state) {
  IntoNothing(state, PrintingByStream(static_cast<std::size_t>(state.range(0))));
}

/// Prints the lines of the simple formatter with stream operators, from plain records.
auto PrintingLinesByStream(std::size_t count) {
  return [records = MakeRecords(count)](std::ostream& out) {
    out << '\n';
    for (const Record& record : records) {
      out << "Record:\n   Count: " << record.count
          << "\n   Enabled: " << (record.isEnabled ? "true" : "false")
          << "\n   Name: " << record.name << "\n   Path: " << record.path
          << "\n   Size: " << record.size << "\n\n";
    }
  };
}

void BM_StreamLinesIntoString(benchmark::State& state) {
  IntoString(state, PrintingLinesByStream(static_cast<std::size_t>(state.range(0))));
}

void BM_StreamLinesIntoNothing(benchmark::State& state) {
  IntoNothing(state, PrintingLinesByStream(static_cast<std::size_t>(state.range(0))));
}

/// Copies a formatter's text in prepared pieces, each about as long as a name or a value.
template <typename Formatter>
auto PrintingPieces(std::size_t count) {
  std::ostringstream out;
  Printing<Formatter>(MakeOutput(count))(out);
  std::vector<std::string> pieces;
  const std::string text = out.str();
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find_first_of(" \n", start + 12), text.size());
    pieces.push_back(text.substr(start, end - start));
    start = end;
  }
  return [pieces = std::move(pieces)](std::ostream& to) {
    std::array<char, 32 * 1024> buffer;
    std::size_t used = 0;
    for (const std::string& piece : pieces) {
      if (piece.size() > buffer.size() - used) {
        to.write(buffer.data(), static_cast<std::streamsize>(std::exchange(used, 0)));
      }
      std::memcpy(buffer.data() + used, piece.data(), piece.size());
      used += piece.size();
    }
    to.write(buffer.data(), static_cast<std::streamsize>(used));
  };
}

template <typename Formatter>
void BM_PiecesIntoString(benchmark::State& state) {
  IntoString(state, PrintingPieces<Formatter>(static_cast<std::size_t>(state.range(0))));
}

template <typename Formatter>
void BM_PiecesIntoNothing(benchmark::State& state) {
  IntoNothing(state, PrintingPieces<Formatter>(static_cast<std::size_t>(state.range(0))));
}

#ifdef KESTREL_HAS_RAPIDJSON
/// Prints the same rows with RapidJSON, indented by three spaces.
auto PrintingByRapidJson(std::size_t count) {
  return [records = MakeRecords(count)](std::ostream& out) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    writer.SetIndent(' ', 3);
    writer.StartArray();
    for (const Record& record : records) {
      writer.StartObject();
      writer.Key("Count");
      writer.Int(record.count);
      writer.Key("Enabled");
      writer.Bool(record.isEnabled);
      writer.Key("Name");
      writer.String(record.name.c_str(), static_cast<rapidjson::SizeType>(record.name.size()));
      writer.Key("Path");
      writer.String(record.path.c_str(), static_cast<rapidjson::SizeType>(record.path.size()));
      writer.Key("Size");
      writer.Int64(record.size);
      writer.EndObject();
    }
    writer.EndArray();
    out.write(buffer.GetString(), static_cast<std::streamsize>(buffer.GetSize()));
  };
}

void BM_RapidJsonIntoString(benchmark::State& state) {
  IntoString(state, PrintingByRapidJson(static_cast<std::size_t>(state.range(0))));
}

void BM_RapidJsonIntoNothing(benchmark::State& state) {
  IntoNothing(state, PrintingByRapidJson(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_RapidJsonIntoString)->Apply(Sizes);
BENCHMARK(BM_RapidJsonIntoNothing)->Apply(Sizes);
#endif

#ifdef KESTREL_HAS_NLOHMANN_JSON
/// Prints the same rows with nlohmann-json, from a tree of values as a formatter has it.
auto PrintingByNlohmannJson(std::size_t count) {
  nlohmann::json list = nlohmann::json::array();
  for (const Record& record : MakeRecords(count)) {
    list.push_back({{"Name", record.name},
                    {"Size", record.size},
                    {"Enabled", record.isEnabled},
                    {"Path", record.path},
                    {"Count", record.count}});
  }
  return [list](std::ostream& out) { out << list.dump(3); };
}

void BM_NlohmannJsonIntoString(benchmark::State& state) {
  IntoString(state, PrintingByNlohmannJson(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_NlohmannJsonIntoString)->Apply(Sizes);
#endif

#ifdef KESTREL_HAS_LIBYAML
/// Emits the events of YAML in block style with libyaml.
class YamlEmitter {
 public:
  YamlEmitter() {
    yaml_emitter_initialize(&emitter_);
    yaml_emitter_set_output(&emitter_, Append, &text_);
    yaml_emitter_set_unicode(&emitter_, 1);
  }
  YamlEmitter(const YamlEmitter&) = delete;
  YamlEmitter& operator=(const YamlEmitter&) = delete;
  ~YamlEmitter() { yaml_emitter_delete(&emitter_); }

  const std::string& GetText() const { return text_; }

  void Emit(const std::vector<Record>& records) {
    yaml_stream_start_event_initialize(&event_, YAML_UTF8_ENCODING);
    Emit();
    yaml_document_start_event_initialize(&event_, nullptr, nullptr, nullptr, 1);
    Emit();
    yaml_sequence_start_event_initialize(&event_, nullptr, nullptr, 1, YAML_BLOCK_SEQUENCE_STYLE);
    Emit();
    for (const Record& record : records) {
      EmitRecord(record);
    }
    yaml_sequence_end_event_initialize(&event_);
    Emit();
    yaml_document_end_event_initialize(&event_, 1);
    Emit();
    yaml_stream_end_event_initialize(&event_);
    Emit();
  }

 private:
  static int Append(void* text, unsigned char* bytes, std::size_t size) {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), size);
    return 1;
  }

  void EmitRecord(const Record& record) {
    yaml_mapping_start_event_initialize(&event_, nullptr, nullptr, 1, YAML_BLOCK_MAPPING_STYLE);
    Emit();
    EmitField("Count", std::to_string(record.count));
    EmitField("Enabled", record.isEnabled ? "true" : "false");
    EmitField("Name", record.name);
    EmitField("Path", record.path);
    EmitField("Size", std::to_string(record.size));
    yaml_mapping_end_event_initialize(&event_);
    Emit();
  }

  void EmitField(const std::string& name, const std::string& value) {
    EmitScalar(name);
    EmitScalar(value);
  }

  void EmitScalar(const std::string& text) {
    yaml_scalar_event_initialize(&event_, nullptr, nullptr,
                                 reinterpret_cast<const yaml_char_t*>(text.data()),
                                 static_cast<int>(text.size()), 1, 1, YAML_ANY_SCALAR_STYLE);
    Emit();
  }

  void Emit() { yaml_emitter_emit(&emitter_, &event_); }

  yaml_emitter_t emitter_;
  yaml_event_t event_;
  std::string text_;
};

void BM_LibyamlIntoString(benchmark::State& state) {
  const std::vector<Record> records = MakeRecords(static_cast<std::size_t>(state.range(0)));
  IntoString(state, [&records](std::ostream& out) {
    YamlEmitter emitter;
    emitter.Emit(records);
    out << emitter.GetText();
  });
}
BENCHMARK(BM_LibyamlIntoString)->Apply(Sizes);
#endif

#ifdef KESTREL_HAS_PUGIXML
/// Prints the elements of the xml formatter with pugixml, from a tree of elements.
auto PrintingByPugixml(std::size_t count) {
  const auto document = std::make_shared<pugi::xml_document>();
  pugi::xml_node list = document->append_child("output").append_child("list");
  for (const Record& record : MakeRecords(count)) {
    pugi::xml_node structure = list.append_child("structure");
    structure.append_attribute("typeName") = "Record";
    const auto append = [&structure](const char* name, const char* kind, const std::string& text) {
      pugi::xml_node field = structure.append_child("field");
      field.append_attribute("name") = name;
      field.append_child(kind).text() = text.c_str();
    };
    append("Count", "integer", std::to_string(record.count));
    append("Enabled", "boolean", record.isEnabled ? "true" : "false");
    append("Name", "string", record.name);
    append("Path", "string", record.path);
    append("Size", "integer", std::to_string(record.size));
  }
  return [document](std::ostream& out) { document->save(out, "   "); };
}

void BM_PugixmlIntoString(benchmark::State& state) {
  IntoString(state, PrintingByPugixml(static_cast<std::size_t>(state.range(0))));
}

void BM_PugixmlIntoNothing(benchmark::State& state) {
  IntoNothing(state, PrintingByPugixml(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(BM_PugixmlIntoString)->Apply(Sizes);
BENCHMARK(BM_PugixmlIntoNothing)->Apply(Sizes);
#endif

BENCHMARK(BM_StreamIntoString)->Apply(Sizes);
BENCHMARK(BM_StreamIntoNothing)->Apply(Sizes);
BENCHMARK(BM_StreamLinesIntoString)->Apply(Sizes);
BENCHMARK(BM_StreamLinesIntoNothing)->Apply(Sizes);

#define KESTREL_ADD_BENCHMARKS(formatter)                                     \
  BENCHMARK_TEMPLATE(BM_FormatIntoString, AutoCli::formatter)->Apply(Sizes);  \
  BENCHMARK_TEMPLATE(BM_FormatIntoNothing, AutoCli::formatter)->Apply(Sizes); \
  BENCHMARK_TEMPLATE(BM_PiecesIntoString, AutoCli::formatter)->Apply(Sizes);  \
  BENCHMARK_TEMPLATE(BM_PiecesIntoNothing, AutoCli::formatter)->Apply(Sizes)

KESTREL_ADD_BENCHMARKS(TableFormatter);
KESTREL_ADD_BENCHMARKS(SimpleFormatter);
KESTREL_ADD_BENCHMARKS(XmlFormatter);
KESTREL_ADD_BENCHMARKS(JsonFormatter);
KESTREL_ADD_BENCHMARKS(PythonFormatter);

/// A formatter of the tool.
template <const Formats::ExactFormat& kFormat>
class Exact : public Formats::ExactFormatter {
 public:
  Exact() : ExactFormatter(kFormat) {}
};

#define KESTREL_ADD_EXACT_BENCHMARKS(format)                                                \
  BENCHMARK_TEMPLATE(BM_FormatIntoString, Exact<Formats::k##format##Format>)->Apply(Sizes); \
  BENCHMARK_TEMPLATE(BM_FormatIntoNothing, Exact<Formats::k##format##Format>)->Apply(Sizes)

KESTREL_ADD_EXACT_BENCHMARKS(Ndjson);
KESTREL_ADD_EXACT_BENCHMARKS(JsonUtf8);
KESTREL_ADD_EXACT_BENCHMARKS(Csv);
KESTREL_ADD_EXACT_BENCHMARKS(Tsv);
KESTREL_ADD_EXACT_BENCHMARKS(Yaml);
KESTREL_ADD_EXACT_BENCHMARKS(ValueXml);
KESTREL_ADD_EXACT_BENCHMARKS(Pretty);

}  // namespace
}  // namespace Kestrel::Benchmarks

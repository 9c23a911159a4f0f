// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Does one kind of work a given number of times, so that the instructions for it can be counted.
//
//     kestrel_workloads WORKLOAD ROUNDS [FILE]
//
// `scripts/compare_benchmarks.py` counts the instructions of two runs with different numbers of
// rounds. The workloads with descriptors write one to FILE (see Descriptor.h) and read it from
// there.

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/CommandTree.h"
#include "benchmarks/Descriptor.h"
#include "benchmarks/Records.h"
#include "benchmarks/ValueDocument.h"
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/PythonFormatter.h"
#include "kestrel/autocli/SimpleFormatter.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/autocli/XmlFormatter.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "kestrel/autocli/XmlUtil.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/ExactFormatter.h"

namespace Kestrel::Benchmarks {
namespace {

constexpr std::size_t kRecords = 2000;
constexpr int kCommands = 10000;

/// The work of one round. The function owns the objects that it uses.
using Work = std::function<void()>;

Work BuildAndDestroy() {
  return [records = MakeRecords(kRecords)] { MakeList(records); };
}

Work LookUp() {
  const std::vector<std::string> names = {"Name", "Size", "Enabled", "Path", "Count"};
  return [list = MakeList(MakeRecords(kRecords)), names] {
    for (const auto& record : list->GetObjects()) {
      for (const std::string& name : names) {
        static_cast<const MetaObj::MetaStruct&>(*record).FindField(name);
      }
    }
  };
}

Work PrintWith(const std::shared_ptr<AutoCli::Formatter>& formatter) {
  const auto output = CallSpec::Output::New();
  output->SetRootObject(MakeList(MakeRecords(kRecords)));
  return [output, formatter] {
    std::ostringstream out;
    AutoCli::FormatParameters parameters;
    AutoCli::DisplayContext display;
    formatter->Format(output, parameters, display, out);
  };
}

template <typename Formatter>
Work Print() {
  return PrintWith(std::make_shared<Formatter>());
}

/// Prints with a formatter of the tool.
template <const Formats::ExactFormat& kFormat>
Work PrintExactly() {
  return PrintWith(std::make_shared<Formats::ExactFormatter>(kFormat));
}

Work ReadValueDocument() {
  return [text = MakeValueDocument(kRecords)] { AutoCli::XmlUtil_ParseXmlOutput(text); };
}

Work CallCommand() {
  const auto dispatcher = std::make_shared<AutoCli::Dispatcher>();
  AddCommands(*dispatcher, kCommands);
  return [dispatcher, words = MakeCall(kCommands)] {
    if (!Call(*dispatcher, PointersTo(words))) {
      throw std::runtime_error("the call failed");
    }
  };
}

Work ReadDescriptor(const std::string& file) {
  std::ofstream(file) << MakeDescriptor("store");
  return [file] { AutoCli::XmlPlugin::New(file)->Initialize(); };
}

Work RegisterDescriptor(const std::string& file) {
  std::ofstream(file) << MakeDescriptor("store");
  return [file] {
    const auto plugin = AutoCli::XmlPlugin::New(file);
    plugin->Initialize();
    plugin->RegisterNamespaces(AutoCli::Namespace::New());
  };
}

Work MakeWork(const std::string& name, const std::string& file) {
  if (name == "descriptor-read") {
    return ReadDescriptor(file);
  }
  if (name == "descriptor-register") {
    return RegisterDescriptor(file);
  }
  static const std::map<std::string, Work (*)()> workloads = {
      {"build", BuildAndDestroy},
      {"look-up", LookUp},
      {"table", Print<AutoCli::TableFormatter>},
      {"simple", Print<AutoCli::SimpleFormatter>},
      {"xml", Print<AutoCli::XmlFormatter>},
      {"json", Print<AutoCli::JsonFormatter>},
      {"python", Print<AutoCli::PythonFormatter>},
      {"ndjson", PrintExactly<Formats::kNdjsonFormat>},
      {"json-utf8", PrintExactly<Formats::kJsonUtf8Format>},
      {"csv", PrintExactly<Formats::kCsvFormat>},
      {"tsv", PrintExactly<Formats::kTsvFormat>},
      {"yaml", PrintExactly<Formats::kYamlFormat>},
      {"value-xml", PrintExactly<Formats::kValueXmlFormat>},
      {"value-document", ReadValueDocument},
      {"call", CallCommand},
  };
  return workloads.at(name)();
}

int Main(const std::string& name, int rounds, const std::string& file) {
  try {
    const Work work = MakeWork(name, file);
    for (int i = 0; i < rounds; ++i) {
      work();
    }
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}

}  // namespace
}  // namespace Kestrel::Benchmarks

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "Usage: kestrel_workloads WORKLOAD ROUNDS [FILE]\n";
    return EXIT_FAILURE;
  }
  return Kestrel::Benchmarks::Main(argv[1], std::atoi(argv[2]), argc > 3 ? argv[3] : "");
}

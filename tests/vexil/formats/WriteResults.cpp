// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// kestrel_write_results SEED COUNT
//
// Writes random results and the output of the tool's formats for them, to be checked by
// check_formats.py. The output consists of netstrings. For each result, these are:
//
// its seed, the number of parameters, the key and value of each parameter, the result and its
// declared structure in the notation of EncodeValue, for each format except pretty the output and
// the messages, and the value that is read back from the output of value-xml.

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "autocli/formatters/results/EncodeValue.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/XmlUtil.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaList.h"
#include "vexil/formats/FormatsPlugin.h"
#include "vexil/formats/RandomResult.h"

namespace Kestrel::Formats {
namespace {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using Testing::Netstring;

std::string EncodeShape(const MetaObject& root) {
  const auto* const list = dynamic_cast<const MetaList*>(&root);
  return Testing::EncodeValue(list == nullptr ? nullptr : list->GetListStructure().get());
}

/// Writes the formatter's output and its messages, and returns the output.
std::string Print(AutoCli::Formatter& formatter, const std::shared_ptr<MetaObject>& root,
                  AutoCli::FormatParameters params) {
  const auto output = CallSpec::Output::New();
  output->SetRootObject(root);
  AutoCli::DisplayContext display;
  std::ostringstream out;
  formatter.Format(output, params, display, out);
  std::string messages;
  for (const std::string& message : output->GetErrors()) {
    messages += message + "\n";
  }
  std::cout << Netstring(out.str()) << Netstring(messages);
  return out.str();
}

std::string ReadBack(const std::string& document) {
  const auto found = document.empty() ? nullptr : AutoCli::XmlUtil_ParseXmlOutput(document);
  return Testing::EncodeValue(found.get());
}

void Write(std::uint64_t seed) {
  RandomResult random(seed);
  const std::shared_ptr<MetaObject> root = random.Make();
  const AutoCli::FormatParameters params = random.MakeParameters(*root);
  std::cout << Netstring(std::to_string(seed))
            << Netstring(std::to_string(params.GetParameters().size()));
  for (const auto& [key, value] : params.GetParameters()) {
    std::cout << Netstring(key) << Netstring(value);
  }
  std::cout << Netstring(Testing::EncodeValue(root.get())) << Netstring(EncodeShape(*root));
  FormatsPlugin plugin;
  std::string document;
  for (const auto& formatter : plugin.GetFormatters()) {
    if (formatter->GetName() == "pretty") {
      continue;  // no program reads it
    }
    const std::string text = Print(*formatter, root, params);
    document = formatter->GetName() == "value-xml" ? text : document;
  }
  std::cout << Netstring(ReadBack(document));
}

}  // namespace
}  // namespace Kestrel::Formats

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: " << argv[0] << " SEED COUNT\n";
    return EXIT_FAILURE;
  }
  const std::uint64_t seed = std::strtoull(argv[1], nullptr, 10);
  const std::uint64_t count = std::strtoull(argv[2], nullptr, 10);
  for (std::uint64_t i = 0; i < count; ++i) {
    Kestrel::Formats::Write(seed + i);
  }
  return std::cout.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}

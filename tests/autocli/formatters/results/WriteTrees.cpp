// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// kestrel_write_trees SEED COUNT | kestrel_write_trees samples | kestrel_write_trees bytes
//
// Writes values and what each formatter prints for them, to be checked by another program. The
// output consists of netstrings, "<length>:<bytes>,". For each value these are:
//
//   its name, the width of the screen, the number of parameters, the key and value of each
//   parameter, the value in the notation of EncodeValue, and for each formatter of
//   ResultFormatterNames the text and the message of the exception.

#include <cstdlib>
#include <iostream>
#include <string>

#include "autocli/formatters/results/EncodeValue.h"
#include "autocli/formatters/results/Formatters.h"
#include "autocli/formatters/results/RandomTree.h"
#include "autocli/formatters/results/ResultValues.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {
namespace {

using MetaObj::MetaStruct;

void Write(const ResultValue& value, unsigned width) {
  std::cout << Netstring(value.name) << Netstring(std::to_string(width))
            << Netstring(std::to_string(value.params.GetParameters().size()));
  for (const auto& [key, text] : value.params.GetParameters()) {
    std::cout << Netstring(key) << Netstring(text);
  }
  std::cout << Netstring(EncodeValue(value.root.get()));
  for (const std::string& name : ResultFormatterNames()) {
    const Printed printed = PrintResult(*MakeFormatter(name), value, width);
    std::cout << Netstring(printed.text) << Netstring(printed.thrown);
  }
}

void WriteSamples() {
  for (const ResultGroup& group : MakeResultGroups()) {
    for (ResultValue value : group.values) {
      value.name = group.name + ": " + value.name;
      for (const unsigned width : {0u, 40u}) {
        Write(value, width);
      }
    }
  }
}

std::shared_ptr<MetaStruct> MakeRow(const std::string& fieldName, const std::string& value) {
  auto row = MetaStruct::New("Row");
  row->SetField(fieldName, value);
  return row;
}

/// Writes each byte between two letters, once in a string and once in the name of a field.
void WriteBytes() {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = {'a', static_cast<char>(byte), 'b'};
    Write({"text " + std::to_string(byte), MakeRow("Text", text), {}}, 0);
    Write({"name " + std::to_string(byte), MakeRow(text, "x"), {}}, 0);
  }
}

void WriteRandom(std::uint64_t seed, std::uint64_t count) {
  for (std::uint64_t tree = seed; tree < seed + count; ++tree) {
    RandomTree random(tree);
    ResultValue value = random.Make();
    value.name += " " + std::to_string(tree);
    Write(value, random.MakeWidth());
  }
}

}  // namespace
}  // namespace Kestrel::Testing

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "samples") {
    Kestrel::Testing::WriteSamples();
  } else if (argc == 2 && std::string(argv[1]) == "bytes") {
    Kestrel::Testing::WriteBytes();
  } else if (argc == 3) {
    Kestrel::Testing::WriteRandom(std::strtoull(argv[1], nullptr, 10),
                                  std::strtoull(argv[2], nullptr, 10));
  } else {
    std::cerr << "usage: kestrel_write_trees SEED COUNT | samples | bytes\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}

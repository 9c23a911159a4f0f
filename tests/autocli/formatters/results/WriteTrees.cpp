// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// kestrel_write_trees SEED COUNT | kestrel_write_trees samples | kestrel_write_trees bytes
//
// Writes values and what each formatter prints for them, to be checked by another program. The
// output consists of netstrings, "<length>:<bytes>,". For each value these are:
//
//   its name, the width of the screen, the number of parameters, the key and value of each
//   parameter, the value in the notation below, and for each formatter of ResultFormatterNames the
//   text and the message of the exception.
//
//   n                        nothing
//   b0 b1                    a boolean
//   i<digits>,               an integer
//   s<netstring>             a string
//   x<kind>,<netstring>      a value whose class does not match its kind, and its text
//   r<netstring><count>,     a structure: its type name, then the name and value of each field
//   l<kind>,<count>,         a list of scalars: its elements
//   t<shape><count>,         a list of structures: its shape, then its elements. The shape is n, or
//                            the declared structure as in r, but without the values of its fields

#include <cstdlib>
#include <iostream>
#include <string>

#include "autocli/formatters/results/Formatters.h"
#include "autocli/formatters/results/RandomTree.h"
#include "autocli/formatters/results/ResultValues.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {
namespace {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

std::string Netstring(const std::string& text) {
  return std::to_string(text.size()) + ":" + text + ",";
}

std::string Number(long value) { return std::to_string(value) + ","; }

std::string Encode(const MetaObject* value);

std::string EncodeHead(const MetaStruct& structure) {
  return "r" + Netstring(structure.GetTypeName()) +
         Number(static_cast<long>(structure.GetFieldNames().size()));
}

std::string EncodeStruct(const MetaStruct& structure) {
  std::string text = EncodeHead(structure);
  for (const std::string& name : structure.GetFieldNames()) {
    text += Netstring(name) + Encode(structure.GetField(name).get());
  }
  return text;
}

std::string EncodeShape(const MetaStruct* shape) {
  if (shape == nullptr) {
    return "n";
  }
  std::string text = EncodeHead(*shape);
  for (const std::string& name : shape->GetFieldNames()) {
    text += Netstring(name);
  }
  return text;
}

std::string EncodeList(const MetaList& list) {
  std::string text = list.GetListType() == MetaType::Struct
                         ? "t" + EncodeShape(list.GetListStructure().get())
                         : "l" + Number(list.GetListType());
  text += Number(static_cast<long>(list.GetCount()));
  for (const auto& element : list.GetObjects()) {
    text += Encode(element.get());
  }
  return text;
}

std::string Encode(const MetaObject* value) {
  if (value == nullptr) {
    return "n";
  }
  if (const auto* boolean = dynamic_cast<const MetaBool*>(value)) {
    return boolean->GetValue() ? "b1" : "b0";
  }
  if (const auto* number = dynamic_cast<const MetaInt*>(value)) {
    return "i" + Number(number->GetValue());
  }
  if (const auto* text = dynamic_cast<const MetaString*>(value)) {
    return "s" + Netstring(text->GetValue());
  }
  if (const auto* structure = dynamic_cast<const MetaStruct*>(value)) {
    return EncodeStruct(*structure);
  }
  if (const auto* list = dynamic_cast<const MetaList*>(value)) {
    return EncodeList(*list);
  }
  return "x" + Number(value->GetType()) + Netstring(value->ToString());
}

void Write(const ResultValue& value, unsigned width) {
  std::cout << Netstring(value.name) << Netstring(std::to_string(width))
            << Netstring(std::to_string(value.params.GetParameters().size()));
  for (const auto& [key, text] : value.params.GetParameters()) {
    std::cout << Netstring(key) << Netstring(text);
  }
  std::cout << Netstring(Encode(value.root.get()));
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

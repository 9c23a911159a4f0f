// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "TypedValue.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Fuzz {

using AutoCli::FormatParameters;
using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

// The XML parser accepts 256 nested elements; a nested value takes up to two of them.
constexpr int kMaxDepth = 100;

class ValueReader {
 public:
  explicit ValueReader(FuzzInput& input) : input_(input) {}

  /// Returns the next value, or null at the end of a structure or list.
  Value Read(int depth) {
    const std::string line = depth > kMaxDepth ? "}" : input_.TakeText();
    const std::string text = line.size() > 2 ? line.substr(2) : "";
    switch (line.empty() ? '}' : line[0]) {
      case 'i':
        return MetaInt::New(std::strtol(text.c_str(), nullptr, 10));
      case 'b':
        return MetaBool::New(false);
      case 'B':
        return MetaBool::New(true);
      case '{':
        return ReadStruct(text, depth);
      case '[':
        return ReadList(text.empty() ? 's' : text[0], depth);
      case '}':
        return nullptr;
      default:
        return MetaString::NewUtf8WithEscapes(std::string(text));
    }
  }

 private:
  Value ReadStruct(const std::string& type, int depth) {
    const bool isNamed = MetaObj::IsValidStructName(type);
    const std::shared_ptr<MetaStruct> structure = MetaStruct::New(isNamed ? type : "Type");
    for (std::string name = input_.TakeText(); !name.empty() && name != "}";
         name = input_.TakeText()) {
      const Value value = Read(depth + 1);
      if (value != nullptr) {
        structure->SetField(name, value);
      }
    }
    return structure;
  }

  static MetaType KindOf(char letter) {
    switch (letter) {
      case 'i':
        return MetaType::Int;
      case 'b':
        return MetaType::Bool;
      case '{':
        return MetaType::Struct;
      default:
        return MetaType::String;
    }
  }

  Value ReadList(char letter, int depth) {
    const MetaType kind = KindOf(letter);
    std::shared_ptr<MetaList> list = kind == MetaType::Struct ? nullptr : MetaList::New(kind);
    for (Value element = Read(depth + 1); element != nullptr; element = Read(depth + 1)) {
      if (list == nullptr && element->GetType() != kind) {
        continue;
      }
      if (list == nullptr) {
        list = MetaList::New(kind, element);
      }
      if (list->Validate(element, nullptr)) {
        list->Add(element);
      }
    }
    return list != nullptr ? list : MetaList::New(kind, nullptr);
  }

  FuzzInput& input_;
};

}  // namespace

FormatParameters TakeParameters(FuzzInput& input) {
  FormatParameters params;
  for (std::string line = input.TakeText(); !line.empty(); line = input.TakeText()) {
    const std::size_t equals = line.find('=');
    if (equals != std::string::npos) {
      params.SetParameter(line.substr(0, equals), line.substr(equals + 1));
    }
  }
  return params;
}

Value TakeValue(FuzzInput& input) { return ValueReader(input).Read(0); }

}  // namespace Kestrel::Fuzz

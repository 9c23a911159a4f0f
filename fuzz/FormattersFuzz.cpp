// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: the name of a formatter; a width; format parameters "key=value", one per line, up to an
// empty line; then a value, each part on a line of its own:
//
//   i NUMBER    b or B (false or true)    s TEXT
//   { TYPE      a structure; its fields follow: for each, a line with the name, then a value
//   [ KIND      a list of i, b, s or {; its elements follow
//   }           ends the structure or list
//
// Every formatter prints every value or throws KestrelException. What json and xml print reads back
// as the same value.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "FuzzInput.h"
#include "Printed.h"
#include "Property.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/InternalPlugin.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::FormatParameters;
using AutoCli::InternalPlugin;
using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

// The XML parser accepts 256 nested elements; a nested value takes up to two of them.
constexpr int kMaxDepth = 100;

// Wider screens only cost time.
constexpr int kMaxWidth = 9999;

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

std::shared_ptr<InternalPlugin> MakePlugin() {
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  plugin->Initialize();
  return plugin;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  if (size > kMaxInputOfFormatter) {
    return 0;
  }
  static const std::shared_ptr<InternalPlugin> plugin = MakePlugin();
  FuzzInput input(data, size);
  const std::string name = input.TakeText();
  const int width = input.TakeNumber(0, kMaxWidth);
  const FormatParameters params = TakeParameters(input);
  const Value value = ValueReader(input).Read(0);
  if (value == nullptr) {
    return 0;
  }
  for (const auto& formatter : plugin->GetFormatters()) {
    if (formatter->GetName() != name) {
      continue;
    }
    try {
      Require(Print(*formatter, value, params, width).size() <= kMaxOutputOfFormatter,
              "the size of the output is bounded");
    } catch (const Kestrel::KestrelException&) {
      // Some formatters print values of certain shapes only.
    }
  }
  RequireJsonReadsBack(value);
  RequireXmlReadsBack(value);
  return 0;
}

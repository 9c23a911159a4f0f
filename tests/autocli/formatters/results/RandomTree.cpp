// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/results/RandomTree.h"

#include <limits>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "support/SampleValues.h"
#include "support/Utf8.h"

namespace Kestrel::Testing {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

ResultValue RandomTree::Make() {
  static const char* const kNames[] = {"tame", "utf8", "wild"};
  wildness_ = static_cast<Wildness>(Pick(3));
  lies_ = OneIn(20);
  const auto root = MakeRoot();
  return {lies_ ? "lying" : kNames[wildness_], root,
          lies_ ? AutoCli::FormatParameters() : MakeParams()};
}

unsigned RandomTree::MakeWidth() {
  return OneIn(2) ? 0 : static_cast<unsigned>(Pick(OneIn(2) ? 30 : 200));
}

std::shared_ptr<MetaObject> RandomTree::MakeRoot() {
  if (OneIn(100)) {
    return MakeChain(20 + Pick(60));  // deeper than ordinary values
  }
  if (OneIn(100)) {
    return MakeStruct(3, 80);  // may have more fields than a shared layout
  }
  return OneIn(2) ? MakeStructs(MakeStruct(1, 6)) : MakeValue(0);
}

std::shared_ptr<MetaObject> RandomTree::MakeValue(int depth) {
  if (depth < 5 && OneIn(3)) {
    return MakeStruct(depth, 6);
  }
  if (depth < 4 && OneIn(4)) {
    return MakeStructs(OneIn(20) ? nullptr : MakeStruct(depth + 1, 4));
  }
  return OneIn(5) ? std::shared_ptr<MetaObject>(MakeScalars()) : MakeScalar();
}

std::shared_ptr<MetaObject> RandomTree::MakeScalar() {
  if (lies_ && OneIn(4)) {
    return std::make_shared<LyingValue>(static_cast<MetaType>(Pick(3)), MakeWord());
  }
  switch (Pick(4)) {
    case 0:
      return MetaBool::New(OneIn(2));
    case 1:
      return MetaInt::New(MakeNumber());
    default:
      return MetaString::New(MakeText());
  }
}

std::shared_ptr<MetaStruct> RandomTree::MakeStruct(int depth, std::uint64_t maxFields) {
  auto structure = MetaStruct::New("Type" + std::to_string(Pick(4)));
  for (std::uint64_t left = Pick(maxFields + 1); left > 0; --left) {
    structure->SetField(MakeName() + (maxFields > 60 ? std::to_string(left) : ""),
                        MakeValue(depth + 1));
  }
  return structure;
}

std::shared_ptr<MetaStruct> RandomTree::MakeChain(std::uint64_t length) {
  auto structure = MakeStruct(5, 3);
  for (; length > 0; --length) {
    auto outer = MakeStruct(5, 2);
    if (OneIn(3)) {
      outer->SetField("list", MakeList({structure}));
    } else {
      outer->SetField("inner", structure);
    }
    structure = outer;
  }
  return structure;
}

std::shared_ptr<MetaList> RandomTree::MakeScalars() {
  const auto kind = static_cast<MetaType>(Pick(3));
  auto list = MetaList::New(kind);
  for (std::uint64_t left = Pick(5); left > 0; --left) {
    if (kind == MetaType::Int) {
      list->Add(MakeNumber());
    } else if (kind == MetaType::Bool) {
      list->Add(OneIn(2));
    } else {
      list->Add(MakeText());
    }
  }
  return list;
}

std::shared_ptr<MetaList> RandomTree::MakeStructs(const std::shared_ptr<MetaStruct>& shape) {
  auto list = MetaList::New(MetaType::Struct, shape);
  for (std::uint64_t left = shape == nullptr ? 0 : Pick(5); left > 0; --left) {
    list->Add(MakeLike(*shape));
  }
  return list;
}

std::shared_ptr<MetaObject> RandomTree::MakeLike(const std::shared_ptr<MetaObject>& value) {
  if (const auto structure = std::dynamic_pointer_cast<MetaStruct>(value)) {
    return MakeLike(*structure);
  }
  if (const auto list = std::dynamic_pointer_cast<MetaList>(value)) {
    if (list->GetListType() == MetaType::Struct) {
      return MakeStructs(list->GetListStructure());
    }
    auto other = MetaList::New(list->GetListType());
    for (const auto& element : list->GetObjects()) {
      other->Add(element);
    }
    return other;
  }
  if (std::dynamic_pointer_cast<MetaInt>(value) != nullptr) {
    return MetaInt::New(MakeNumber());
  }
  if (std::dynamic_pointer_cast<MetaString>(value) != nullptr) {
    return MetaString::New(MakeText());
  }
  return value;
}

std::shared_ptr<MetaStruct> RandomTree::MakeLike(const MetaStruct& structure) {
  // A list accepts structures with other type names too.
  auto other = MetaStruct::New(OneIn(10) ? "Other" : structure.GetTypeName());
  for (const std::string& name : structure.GetFieldNames()) {
    other->SetField(name, MakeLike(structure.GetField(name)));
  }
  return other;
}

long RandomTree::MakeNumber() {
  switch (Pick(6)) {
    case 0:
      return std::numeric_limits<long>::min();
    case 1:
      return std::numeric_limits<long>::max();
    case 2:
      return static_cast<long>(random_());
    default:
      return static_cast<long>(Pick(200)) - 100;
  }
}

std::string RandomTree::MakeText() {
  if (OneIn(300)) {
    return std::string(30000 + Pick(10000), 'x') + MakeWord();
  }
  std::string text;
  for (std::uint64_t left = Pick(12); left > 0; --left) {
    text += OneIn(3) ? " " : "";
    text += MakeWord();
  }
  return text;
}

std::string RandomTree::MakeWord() {
  std::string word;
  for (std::uint64_t left = Pick(6); left > 0; --left) {
    AddCharacter(word);
  }
  return word;
}

std::string RandomTree::MakeName() {
  std::string name = "f" + std::to_string(Pick(6));
  if (OneIn(4)) {
    name += ' ';
    name += static_cast<char>('!' + Pick('~' - '!' + 1));
    name += OneIn(2) ? MakeWord() : "";
  }
  return name;
}

void RandomTree::AddCharacter(std::string& text) {
  if (wildness_ == Wild && OneIn(3)) {
    text += static_cast<char>(Pick(256));
    return;
  }
  if (wildness_ != Tame && OneIn(3)) {
    static const std::uint32_t kLimits[] = {0x80, 0x800, 0x10000, 0x110000};
    const std::uint64_t size = Pick(3);
    const auto point =
        static_cast<std::uint32_t>(kLimits[size] + Pick(kLimits[size + 1] - kLimits[size]));
    text += EncodeUtf8(point >= 0xd800 && point < 0xe000 ? 0x20ac : point);
    return;
  }
  if (wildness_ != Tame && OneIn(10)) {
    text += "\n\t\r\\"[Pick(4)];
    return;
  }
  text += OneIn(4) ? "&<>%\"'/#;{}[],:"[Pick(15)] : static_cast<char>('a' + Pick(26));
}

AutoCli::FormatParameters RandomTree::MakeParams() {
  AutoCli::FormatParameters params;
  const char* const optional[][2] = {
      {"align-fields", "true"},     {"fields", "f0, f1 ,f2"},      {"fields:Type0", "f1,f0"},
      {"fields:Type1", "f2"},       {"fields:Type2", "f0,f0"},     {"header:Type0", "<NONE>"},
      {"header:Type1", "A %"},      {"header:Type2", "%f0%-%f1%"}, {"header-line", "false"},
      {"show-header", "false"},     {"show-header", "true"},       {"table-columns", "f3,f1.f2"},
      {"table-header", "false"},    {"wrap-last", "true"},         {"printf:Type0.f0", "%06ld|"},
      {"printf:Type1.f1", "%-8s|"}, {"printf:Type2.f2", "%d%%"},   {"printf:Type3.f3", "plain"},
      {"units:Type0.f0", "MB"},     {"units:Type3.f2", "<&>"},     {"stylesheet", "a\"b<c>"},
      {"a'b &<%>\"", "x'y &<%>\""}};
  const std::uint64_t rarity = 2 + Pick(20);
  for (const auto& [key, value] : optional) {
    if (OneIn(rarity)) {
      params.SetParameter(key, value);
    }
  }
  return params;
}

}  // namespace Kestrel::Testing

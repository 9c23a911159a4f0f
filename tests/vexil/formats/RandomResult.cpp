// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/RandomResult.h"

#include <limits>
#include <vector>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "support/Utf8.h"

namespace Kestrel::Formats {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

// Characters and words that are special in one of the formats.
const std::vector<std::string>& SpecialTexts() {
  static const std::vector<std::string> texts = {
      "\"",         "'",      "\\",     "/",      ",",      ";",      ":",          ": ",
      " #",         "#",      "&",      "*",      "!",      "|",      ">",          "<",
      "%",          "@",      "`",      "{",      "}",      "[",      "]",          "-",
      "- ",         "? ",     "~",      "=",      ".",      "...",    "---",        "\t",
      "\n",         "\r",     "\r\n",   " ",      "\x7f",   "\x1b",   "\x01",       "]]>",
      "<!--",       "&amp;",  "true",   "null",   "Yes",    "off",    "y",          "0",
      "1.5",        "1e3",    "0x1f",   "0o7",    "1:20",   ".inf",   ".nan",       "2001-01-01",
      "<<",         "Zoë",    "\u0080", "\u0085", "\u00a0", "\u2028", "\u2029",     "\u202e",
      "\ufeff",     "\ufffd", "\ufffe", "\uffff", "\ud7ff", "\ue000", "\U00010000", "\U0010ffff",
      "\U0001f600", "e\u0301"};
  return texts;
}

bool IsNull(const std::shared_ptr<MetaStruct>& structure) { return structure == nullptr; }

}  // namespace

std::shared_ptr<MetaObject> RandomResult::Make() {
  isUtf8_ = !OneIn(30);
  switch (Pick(10)) {
    case 0:
      return MakeScalar();
    case 1:
      return MakeScalars();
    case 2:
      return OneIn(5) ? MakeChain() : MakeStruct(0, OneIn(50) ? 80 : 6);
    default:
      return MakeStructs(OneIn(30) ? nullptr : MakeStruct(1, 6), 8);
  }
}

AutoCli::FormatParameters RandomResult::MakeParameters(const MetaObject& root) {
  AutoCli::FormatParameters params;
  const auto* const list = dynamic_cast<const MetaList*>(&root);
  const auto shape = list == nullptr ? nullptr : list->GetListStructure();
  const auto* const structure =
      list == nullptr ? dynamic_cast<const MetaStruct*>(&root) : shape.get();
  if (structure != nullptr && OneIn(2)) {
    std::string fields = PickPath(*structure);
    while (!OneIn(3)) {
      fields += (OneIn(5) ? " , " : ",") + PickPath(*structure);
    }
    params.SetParameter("fields", fields);
  }
  if (structure != nullptr && OneIn(3)) {
    params.SetParameter("sort", (OneIn(2) ? "-" : "") + PickPath(*structure));
  }
  if (structure == nullptr && OneIn(4)) {
    params.SetParameter("sort", OneIn(2) ? "-value" : "value");
  }
  if (OneIn(4)) {
    params.SetParameter("limit", std::to_string(Pick(6)));
  }
  if (OneIn(5)) {
    params.SetParameter("fields:Type0", "nope");
  }
  return params;
}

std::string RandomResult::PickPath(const MetaStruct& shape) {
  const std::vector<std::string> names = shape.GetFieldNames();
  if (names.empty() || OneIn(60)) {
    return "nope";
  }
  const std::string name = names[Pick(names.size())];
  const auto inside = std::dynamic_pointer_cast<MetaStruct>(shape.GetField(name));
  return IsNull(inside) || OneIn(3) ? name : name + "." + PickPath(*inside);
}

std::shared_ptr<MetaObject> RandomResult::MakeValue(int depth) {
  if (depth < 4 && OneIn(4)) {
    return MakeStruct(depth, 5);
  }
  if (depth < 4 && OneIn(6)) {
    return MakeStructs(OneIn(10) ? nullptr : MakeStruct(depth + 1, 4), 4);
  }
  return OneIn(5) ? std::shared_ptr<MetaObject>(MakeScalars()) : MakeScalar();
}

std::shared_ptr<MetaObject> RandomResult::MakeScalar() {
  switch (Pick(4)) {
    case 0:
      return MetaBool::New(OneIn(2));
    case 1:
      return MetaInt::New(MakeNumber());
    default:
      return MetaString::New(MakeText());
  }
}

std::shared_ptr<MetaStruct> RandomResult::MakeStruct(int depth, std::uint64_t maxFields) {
  auto structure = MetaStruct::New("Type" + std::to_string(Pick(4)));
  for (std::uint64_t left = Pick(maxFields + 1); left > 0; --left) {
    structure->SetField(MakeName(), MakeValue(depth + 1));
  }
  return structure;
}

std::shared_ptr<MetaStruct> RandomResult::MakeChain() {
  auto structure = MakeStruct(4, 2);
  for (std::uint64_t left = 10 + Pick(30); left > 0; --left) {
    auto outer = MakeStruct(4, 1);
    if (OneIn(3)) {
      auto list = MetaList::New(MetaType::Struct, structure);
      list->Add(structure);
      outer->SetField("list", list);
    } else {
      outer->SetField("inner", structure);
    }
    structure = outer;
  }
  return structure;
}

std::shared_ptr<MetaList> RandomResult::MakeScalars() {
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

std::shared_ptr<MetaList> RandomResult::MakeStructs(const std::shared_ptr<MetaStruct>& shape,
                                                    std::uint64_t maxCount) {
  auto list = MetaList::New(MetaType::Struct, shape);
  for (std::uint64_t left = IsNull(shape) ? 0 : Pick(maxCount + 1); left > 0; --left) {
    list->Add(MakeLike(*shape));
  }
  return list;
}

std::shared_ptr<MetaObject> RandomResult::MakeLike(const std::shared_ptr<MetaObject>& value) {
  if (const auto structure = std::dynamic_pointer_cast<MetaStruct>(value)) {
    return MakeLike(*structure);
  }
  if (const auto list = std::dynamic_pointer_cast<MetaList>(value)) {
    if (list->GetListType() != MetaType::Struct) {
      return list;
    }
    // A list without a declared structure may contain structures of any shape.
    return MakeStructs(
        IsNull(list->GetListStructure()) ? MakeStruct(3, 3) : list->GetListStructure(), 4);
  }
  if (std::dynamic_pointer_cast<MetaInt>(value) != nullptr) {
    return MetaInt::New(MakeNumber());
  }
  if (std::dynamic_pointer_cast<MetaString>(value) != nullptr) {
    return MetaString::New(MakeText());
  }
  return MetaBool::New(OneIn(2));
}

std::shared_ptr<MetaStruct> RandomResult::MakeLike(const MetaStruct& structure) {
  // A list accepts structures with other type names too.
  auto other = MetaStruct::New(OneIn(10) ? "Other" : structure.GetTypeName());
  for (const std::string& name : structure.GetFieldNames()) {
    other->SetField(name, MakeLike(structure.GetField(name)), OneIn(10) ? "About." : "");
  }
  return other;
}

long RandomResult::MakeNumber() {
  switch (Pick(6)) {
    case 0:
      return std::numeric_limits<long>::min();
    case 1:
      return std::numeric_limits<long>::max();
    case 2:
      return static_cast<long>(random_());
    default:
      return static_cast<long>(Pick(20)) - 10;
  }
}

std::string RandomResult::MakeText() {
  std::string text;
  for (std::uint64_t left = OneIn(200) ? 20000 : Pick(OneIn(4) ? 60 : 4); left > 0; --left) {
    text += MakeCharacter();
  }
  return text;
}

std::string RandomResult::MakeName() {
  if (OneIn(3)) {
    return {static_cast<char>('a' + Pick(4))};
  }
  std::string name(OneIn(1000) ? 1500 : 0, 'n');
  for (std::uint64_t left = Pick(4); left > 0; --left) {
    name += MakeCharacter();
  }
  return name;
}

std::string RandomResult::MakeCharacter() {
  if (!isUtf8_ && OneIn(20)) {
    return {static_cast<char>(0x80 + Pick(0x80))};
  }
  switch (Pick(4)) {
    case 0:
      return SpecialTexts()[Pick(SpecialTexts().size())];
    case 1: {
      const std::uint32_t limits[] = {0, 0x80, 0x800, 0x10000, 0x110000};
      const std::uint64_t size = Pick(4);
      const auto point =
          static_cast<std::uint32_t>(limits[size] + Pick(limits[size + 1] - limits[size]));
      return Testing::EncodeUtf8(point >= 0xd800 && point < 0xe000 ? 0x20ac : point);
    }
    default:
      return {static_cast<char>('a' + Pick(26))};
  }
}

}  // namespace Kestrel::Formats

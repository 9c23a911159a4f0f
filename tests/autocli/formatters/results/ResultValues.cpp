// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/results/ResultValues.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleValues.h"

namespace Kestrel::Testing {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

using Texts = std::vector<std::string>;

ResultValue Plain(std::string name, std::shared_ptr<MetaObject> root) {
  return {std::move(name), std::move(root), {}};
}

template <typename Element>
std::shared_ptr<MetaList> ListOf(MetaType kind, const std::vector<Element>& elements) {
  auto list = MetaList::New(kind);
  list->AddAll(elements);
  return list;
}

/// Returns one value for each string, with the string as its root, and a last one with a list of
/// structures that contains all strings.
std::vector<ResultValue> MakeTexts(const std::vector<std::pair<const char*, std::string>>& texts) {
  std::vector<ResultValue> values;
  auto shape = MetaStruct::New("Note");
  shape->SetField("Text", "");
  shape->SetField("Title", "");
  const auto list = MetaList::New(MetaType::Struct, shape);
  for (const auto& [name, text] : texts) {
    values.push_back(Plain(name, MetaString::New(text)));
    auto note = MetaStruct::New("Note");
    note->SetField("Text", text);
    note->SetField("Title", name);
    list->Add(note);
  }
  values.push_back(Plain("all in a list of structures", list));
  return values;
}

std::vector<ResultValue> MakeScalars() {
  return {Plain("true", MetaBool::New(true)),
          Plain("false", MetaBool::New(false)),
          Plain("zero", MetaInt::New(0)),
          Plain("below zero", MetaInt::New(-1)),
          Plain("a shared integer", MetaInt::New(20)),
          Plain("an integer of its own", MetaInt::New(21)),
          Plain("the least integer", MetaInt::New(std::numeric_limits<long>::min())),
          Plain("the greatest integer", MetaInt::New(std::numeric_limits<long>::max())),
          Plain("an empty text", MetaString::New("")),
          Plain("a text", MetaString::New("two words"))};
}

std::vector<ResultValue> MakeEmpties() {
  const auto empty = MetaStruct::New("Empty");
  auto holder = MetaStruct::New("Holder");
  holder->SetField("list", MetaList::New(MetaType::String));
  holder->SetField("records", MetaList::New(MetaType::Struct, MakeDisk("", 0)));
  holder->SetField("structure", MetaStruct::New("Inner"));
  holder->SetField("text", "");
  return {Plain("a structure", MetaStruct::New("Empty")),
          Plain("a list of booleans", MetaList::New(MetaType::Bool)),
          Plain("a list of integers", MetaList::New(MetaType::Int)),
          Plain("a list of strings", MetaList::New(MetaType::String)),
          Plain("a list of structures", MakeDisks({})),
          Plain("a list of structures without a shape", MetaList::New(MetaType::Struct, nullptr)),
          Plain("a list of empty texts", ListOf(MetaType::String, Texts{"", "", ""})),
          Plain("a list of empty structures", MakeList({empty, empty})),
          Plain("a structure of all these", holder)};
}

std::vector<ResultValue> MakeLists() {
  return {Plain("booleans", ListOf(MetaType::Bool, std::vector<bool>{true, false, true})),
          Plain("one boolean", ListOf(MetaType::Bool, std::vector<bool>{false})),
          Plain("integers", ListOf(MetaType::Int, std::vector<long>{-1, 0, 4096})),
          Plain("strings", ListOf(MetaType::String, Texts{"a", "", "b, c", "two words "})),
          Plain("structures", MakeDisks({{"disk1", 512}, {"d2", 4096}})),
          Plain("one structure", MakeDisks({{"disk1", 512}}))};
}

std::vector<ResultValue> MakeStructures() {
  auto box = MetaStruct::New("Box");
  box->SetField("disks", MakeDisks({{"a", 1}, {"b", 2}}));
  box->SetField("mounts", MakeMounts());
  box->SetField("numbers", std::vector<long>{1, 2, 3});
  return {Plain("a structure", MakeDisk("disk1", 512)), Plain("mounts", MakeMounts()),
          Plain("structures in structures", MakeNested(4)),
          Plain("a list of structures that hold lists of structures", MakeList({box, box}))};
}

std::vector<ResultValue> MakeNames() {
  auto structure = MetaStruct::New("Row2");
  for (const char* name : {"", " ", "two words", "trailing ", "a.b", "a:b", "a,b", "50%", "it's",
                           "<tag>", "R&D", "a/b", "name\xc3\xa4", "Zebra", "_", "1"}) {
    structure->SetField(name, name);
  }
  auto hostile = MetaStruct::New("Row3");
  for (const char* name : {"\"", "\\", "a\nb", "a\tb", "a\rb", "\x01", "\x7f", "\xff"}) {
    hostile->SetField(name, 1);
  }
  return {Plain("blanks and punctuation", structure), Plain("in a list", MakeList({structure})),
          Plain("bytes that some format cannot hold", hostile)};
}

std::vector<ResultValue> MakeEscapes() {
  return MakeTexts({{"markup", "<a href=\"x\">R&D's</a> <!-- 100% ]]> &amp; &#37;"},
                    {"quotes", "\"a\" 'b' \"\"\" '''"},
                    {"a quote at the end", "a\""},
                    {"backslashes", "C:\\new\\table \\\" \\u0041 \\"},
                    {"slashes", "/usr/lib//x/"},
                    {"lines", "one\ntwo\r\nthree\n\n"},
                    {"tabs and blanks", "\ta  b\t "},
                    {"conversions", "%s %n %% %5d"},
                    {"brackets", "{'a' => '1', } [1, ] {\"a\": 1}"}});
}

std::vector<ResultValue> MakeBytes() {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    all += static_cast<char>(byte);
  }
  return MakeTexts({{"all bytes", all}});
}

std::vector<ResultValue> MakeUtf8() {
  return MakeTexts({{"two bytes",
                     "Gr\xc3\xb6\xc3\x9f"
                     "e \xd0\xb5"},
                    {"three bytes", "\xe2\x82\xac \xe6\x97\xa5\xe6\x9c\xac"},
                    {"four bytes", "\xf0\x9f\x98\x80 \xf4\x8f\xbf\xbf"},
                    {"not characters", "\xef\xbf\xbe \xef\xbf\xbf"},
                    {"line ends of other kinds",
                     "a\xc2\x85"
                     "b\xe2\x80\xa8"
                     "c\xe2\x80\xa9"
                     "d"},
                    {"a lone byte",
                     "a\xff"
                     "b\x80"},
                    {"cut short", "\xe2\x82"},
                    {"overlong", "\xc0\xaf \xe0\x80\xaf"},
                    {"a surrogate", "\xed\xa0\x80"},
                    {"too large", "\xf4\x90\x80\x80"}});
}

std::shared_ptr<MetaObject> Lie(int kind) {
  return std::make_shared<LyingValue>(static_cast<MetaType>(kind));
}

std::vector<ResultValue> MakeLies() {
  auto structure = MetaStruct::New("Liar");
  const char* const names[] = {"int", "bool", "string", "structure", "list", "unknown"};
  for (int kind = 0; kind < 6; ++kind) {
    structure->SetField(names[kind], Lie(kind));
  }
  auto row = MetaStruct::New("Row");  // has only kinds that a list can compare
  for (const int kind : {MetaType::Int, MetaType::Bool, MetaType::String}) {
    row->SetField(names[kind], Lie(kind));
  }
  auto list = MetaList::New(MetaType::Int);
  list->Add(1);
  list->Add(Lie(MetaType::Int));
  list->Add(2);
  std::vector<ResultValue> values = {Plain("nothing", nullptr)};
  for (int kind = 0; kind < 6; ++kind) {
    values.push_back(Plain(std::string("no ") + names[kind], Lie(kind)));
  }
  values.push_back(Plain("fields", structure));
  values.push_back(Plain("an element", list));
  values.push_back(Plain("fields in a list of structures", MakeList({row})));
  return values;
}

std::vector<ResultValue> MakeParameterised() {
  const auto disks = [] { return MakeDisks({{"disk1", 512}, {"d2", 4096}}); };
  return {{"a stylesheet", disks(), MakeParameters({{"stylesheet", "disks.xsl"}})},
          {"a stylesheet with markup", disks(), MakeParameters({{"stylesheet", "a\"b&c<d>%'"}})},
          {"an empty stylesheet", disks(), MakeParameters({{"stylesheet", ""}})},
          {"units and patterns", disks(),
           MakeParameters({{"printf:Disk.Size", "%06ld"}, {"units:Disk.Size", "MB"}})},
          {"chosen fields", disks(), MakeParameters({{"fields:Disk", "Size,Name"}})},
          {"an unknown field", disks(), MakeParameters({{"fields", "Name,Nope"}})},
          {"flags", disks(), MakeParameters({{"align-fields", "true"}, {"header-line", "false"}})},
          {"keys with markup", disks(),
           MakeParameters({{"", "empty"}, {"a\"b", "<&>"}, {"header:Disk", "%Name%: \xc3\xa4"}})}};
}

}  // namespace

std::vector<ResultGroup> MakeResultGroups() {
  return {{"scalars", MakeScalars()}, {"empties", MakeEmpties()},
          {"lists", MakeLists()},     {"records", MakeStructures()},
          {"names", MakeNames()},     {"escapes", MakeEscapes()},
          {"bytes", MakeBytes()},     {"utf8", MakeUtf8()},
          {"lies", MakeLies()},       {"parameters", MakeParameterised()}};
}

std::vector<std::string> ResultGroupNames() {
  std::vector<std::string> names;
  for (const ResultGroup& group : MakeResultGroups()) {
    names.push_back(group.name);
  }
  return names;
}

ResultGroup MakeResultGroup(const std::string& name) {
  const std::vector<ResultGroup> groups = MakeResultGroups();
  return *std::find_if(groups.begin(), groups.end(),
                       [&](const ResultGroup& group) { return group.name == name; });
}

}  // namespace Kestrel::Testing

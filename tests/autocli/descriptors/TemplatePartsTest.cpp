// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/TemplateParts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/Random.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using Testing::Random;
using Testing::Rounds;

using Values = std::map<std::string, std::string>;

/// Inserts one parameter into its markers of every kind. What is inserted depends on the form of
/// the marker.
void Insert(TemplateText& text, const std::string& name, const std::string& value) {
  if (const auto place = text.FindValue(name)) {
    text.InsertValue(name, *place == TemplateText::ValuePlace::Bare ? value : "Q" + value);
  }
  text.KeepConditionals(name);
  if (const auto form = text.FindList(name)) {
    text.InsertList(name, form->separator + value + (form->isQuoted ? "T" : "F"));
  }
  if (const auto form = text.FindMultiList(name)) {
    MarkedText items = form->prefix;
    items.AppendValue(value + (form->isQuoted ? "T" : "F"));
    text.InsertMultiList(name, items);
  }
}

std::vector<std::string> NamesOf(const Values& values) {
  std::vector<std::string> names;
  for (const auto& [name, value] : values) {
    names.push_back(name);
  }
  return names;
}

std::optional<std::string> InParts(const std::string& text, const Values& values) {
  const auto done = ApplyInParts(
      text, NamesOf(values),
      [&](TemplateText& part, const std::string& name) { Insert(part, name, values.at(name)); });
  return done.has_value() ? std::make_optional(done->GetText()) : std::nullopt;
}

std::string InTheWhole(const std::string& text, const Values& values) {
  TemplateText whole(text);
  for (const auto& [name, value] : values) {
    Insert(whole, name, value);
  }
  return whole.GetText();
}

/// Cuts a template to separate the parameters `names`. Returns the part of each one that has
/// markers, in the order of `names`; nothing if the parameters cannot be separated.
std::vector<std::string> PartsOf(const std::string& text, const std::vector<std::string>& names) {
  std::vector<std::string> parts;
  ApplyInParts(text, names, [&](TemplateText& part, const std::string&) {
    parts.push_back(part.GetText());
    part = TemplateText("done");
  });
  return parts;
}

TEST(TemplatePartsTest, CutsAfterSeparatorsAndBetweenConditionals) {
  EXPECT_THAT(PartsOf("c $val{aa} --b '$val{bb}'\nx $list{cc,' ',true} y", {"aa", "bb", "cc"}),
              ElementsAre("c $val{aa} --b ", "'$val{bb}'\nx ", "$list{cc,' ',true} y"));
  EXPECT_THAT(PartsOf("$val{aa}:$val{bb}", {"aa", "bb"}), ElementsAre("$val{aa}:", "$val{bb}"));
  EXPECT_THAT(PartsOf("c$if{aa,a '$val{aa}'}$if{bb,b}$if{zz,z}", {"aa", "bb"}),
              ElementsAre("c$if{aa,a '$val{aa}'}", "$if{bb,b}$if{zz,z}"));
  EXPECT_THAT(PartsOf("$val{aa} $val{aa} $multilist{bb,-x y,true}", {"bb", "aa"}),
              ElementsAre("$multilist{bb,-x y,true}", "$val{aa} $val{aa} "));
}

TEST(TemplatePartsTest, CutsOnlyAfterTheLastMarkerOfAParameter) {
  EXPECT_THAT(PartsOf("$val{aa} $val{aa}$val{bb}", {"aa", "bb"}), ElementsAre());
  EXPECT_THAT(PartsOf("$val{aa} $val{aa} $val{bb}", {"aa", "bb"}),
              ElementsAre("$val{aa} $val{aa} ", "$val{bb}"));
}

TEST(TemplatePartsTest, AParameterWithoutMarkersHasNoPart) {
  EXPECT_THAT(PartsOf("c $val{aa} $val{bbb}", {"aa", "bb"}), ElementsAre("c $val{aa} $val{bbb}"));
  EXPECT_EQ(InParts("no markers", {{"aa", "1"}}), "no markers");
}

TEST(TemplatePartsTest, RefusesParametersWithoutACutBetweenThem) {
  const Values values = {{"aa", "1"}, {"bb", "2"}};
  for (const char* text :
       {"$val{aa}$val{bb}", "$val{aa}x$val{bb}", "$val{aa}'$val{bb}", "$if{aa,x $val{bb}}",
        "$if{aa,x}$val{bb}", "{ $val{aa} $val{bb} }", "$val{aa} $val{bb} $val{aa}", "$val{aa",
        "{ $val{aa} $val{bb}", "$if{aa,} $if{bb,x}", "$multilist{aa,x} $val{bb} ,true}",
        "$list{aa,'x',yes} $val{bb}"}) {
    EXPECT_EQ(InParts(text, values), std::nullopt) << text;
  }
}

TEST(TemplatePartsTest, RefusesATemplateInWhichAReplacementMakesAMarker) {
  EXPECT_EQ(InParts("$if{aa,$v}$if{bb,al{cc}}", {{"aa", "1"}, {"bb", "2"}, {"cc", "3"}}),
            std::nullopt);
  EXPECT_EQ(InParts("$val{c$val{aa}} $val{bb}", {{"aa", "c"}, {"bb", "2"}, {"cc", "3"}}),
            std::nullopt);
}

TEST(TemplatePartsTest, MarkersInValuesAreNotMarkers) {
  EXPECT_EQ(InParts("$val{aa} $val{bb}", {{"aa", "$val{bb}$if{bb,"}, {"bb", "$val{aa}"}}),
            "$val{bb}$if{bb, $val{aa}");
}

// If the whole template were searched for each parameter, this would take a minute.
TEST(TemplatePartsTest, SearchesOnlyOnePartForEachOfManyParameters) {
  std::string text;
  std::string expected;
  Values values;
  for (int i = 0; i < 20000; ++i) {
    const std::string name = "p" + std::to_string(i);
    text += "$if{" + name + ",--" + name + " '$val{" + name + "}' }";
    expected += "--" + name + " 'Q" + name + "' ";
    values[name] = name;
  }
  EXPECT_TRUE(InParts(text, values) == expected);
}

/// Makes a string of fewer than `end` random pieces.
template <typename Pieces>
std::string MakeText(Random& random, const Pieces& pieces, std::size_t end) {
  std::string text;
  for (std::size_t i = random.Below(end); i > 0; --i) {
    text += random.Pick(pieces);
  }
  return text;
}

constexpr std::string_view kPieces[] = {":",
                                        "=",
                                        "\"",
                                        "/",
                                        " ",
                                        " ",
                                        "\n",
                                        "'",
                                        "x",
                                        "{",
                                        "}",
                                        "}",
                                        ",",
                                        "$",
                                        "$v",
                                        "al{",
                                        "aa",
                                        "bb}",
                                        "'$val{aa}'",
                                        "$val{bb}",
                                        "$val{c",
                                        "$if{aa,",
                                        "$if{bb,",
                                        "$if{zz,",
                                        "$if{aa,x}",
                                        "$if{bb,'y'}",
                                        "$if{cc,}",
                                        "$if{",
                                        "$if{dd,$val{dd}}",
                                        "$list{cc,'",
                                        "',true}",
                                        ",false}",
                                        "$val{cc}",
                                        "$multilist{aa,",
                                        "$val{dd} ",
                                        " $val{bb} ",
                                        " $val{aa} ",
                                        "$if{v}$if{",
                                        "$list{bb,' ',true} ",
                                        "$val{zz}",
                                        "$list{aa,'}',false} ",
                                        " $multilist{cc,{a,true}",
                                        "$multilist{dd,-x y,false}"};

constexpr std::string_view kValuePieces[] = {"'",         "}", "{", "$val{bb}", "bb",    "c",
                                             "$if{dd,x}", "",  " ", ",true}",   "al{dd}"};

TEST(TemplatePartsTest, HasTheSameResultAsTheWholeTemplate) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const int rounds = Rounds(50000, 5000000);
  int cut = 0;
  for (int i = 0; i < rounds && !HasFailure(); ++i) {
    const std::string text = MakeText(random, kPieces, 10);
    Values values;
    for (const char* name : {"aa", "bb", "cc", "dd"}) {
      if (random.Chance(70)) {
        values[name] = MakeText(random, kValuePieces, 4);
      }
    }
    const std::optional<std::string> result = InParts(text, values);
    if (result.has_value()) {
      ++cut;
      EXPECT_EQ(*result, InTheWhole(text, values)) << text << testing::PrintToString(values);
    }
  }
  EXPECT_GT(cut, rounds / 4);
}

}  // namespace
}  // namespace Kestrel::AutoCli

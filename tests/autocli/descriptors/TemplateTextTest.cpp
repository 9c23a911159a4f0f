// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Compares the scanners with a slow model that states the rules of the template language as regular
// expressions.

#include "autocli/descriptors/TemplateText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <boost/regex.hpp>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "support/Random.h"

namespace Kestrel::AutoCli {
namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using Testing::Random;
using Testing::Rounds;

std::string Cleaned(const std::string& text) {
  TemplateText cleaned(text);
  cleaned.RemoveConditionals();
  return cleaned.GetText();
}

TEST(TemplateTextTest, RemovesAnUnclosedConditionalUpToTheEndOfABlockInIt) {
  EXPECT_EQ(Cleaned("$if{a,b {c} d"), " d");
  EXPECT_EQ(Cleaned("x $if{q,$if{a,b {c} {d} e"), "x  e");
}

TEST(TemplateTextTest, RemovesUpToTheEndOfALaterBlock) {
  EXPECT_EQ(Cleaned("{ $if{a,b} } {c}"), "{ ");
  EXPECT_EQ(Cleaned("$if{a,} {c}"), "");
}

TEST(TemplateTextTest, MakesAnotherPassAfterARemoval) {
  EXPECT_EQ(Cleaned("{ $if{x,y} $if{a,b} } {c}"), "{  ");
}

TEST(TemplateTextTest, StepsIntoEachBlockThatARemovalOpens) {
  EXPECT_EQ(Cleaned("{ { { $if{a,b} } {c} $if{a,b} } {c} $if{a,b} } {c}"), "{ { {   ");
  EXPECT_EQ(Cleaned("{ {q} $if{x,y} {r} $if{a,b} } {c}"), "{ {q}  {r} ");
  EXPECT_EQ(Cleaned("{ $if{x,y} $if{a,b} } {c} ${d} {e}"), "{   ${d} {e}");
}

TEST(TemplateTextTest, ABlockWhoseEndIsRemovedMayEndAtALaterBrace) {
  EXPECT_EQ(Cleaned("{ $if{x,y} $if{a,b} } {c} } e"), "{ $if{x,y}  } e");
  EXPECT_EQ(Cleaned("{ { $if{x,y} $if{a,b} } } {c} } e"), "{ { $if{x,y}  } e");
}

TEST(TemplateTextTest, TextThatARemovalJoinsMayBeAMarker) {
  EXPECT_EQ(Cleaned("$i$if{a,b}f{c,d}e"), "e");
  EXPECT_EQ(Cleaned("$if{a$if{x,y},b {c}"), "");
}

TEST(TemplateTextTest, AMultiListHasAPrefixOfAtLeastOneByte) {
  const MarkedText values("values");
  TemplateText twice("$multilist{li,,true} $multilist{li,-x,true} $multilist{li,-y,true}");
  twice.InsertMultiList("li", values);
  EXPECT_EQ(twice.GetText(), "values values");
  EXPECT_FALSE(TemplateText("$multilist{li,,true}").FindMultiList("li").has_value());
}

constexpr const char* kScalars[] = {"aa", "ab", "c-1", "zz"};
constexpr const char* kLists[] = {"li", "lj"};
constexpr const char* kFlag = "ff";

std::shared_ptr<InputSpec> MakeInputSpec() {
  auto spec = InputSpec::New();
  for (const char* name : kScalars) {
    spec->AddParameter(ParameterSpec::New(name, ParameterType::String));
  }
  for (const char* name : kLists) {
    spec->AddParameter(ParameterSpec::New(name, ParameterType::StringList));
  }
  spec->AddParameter(ParameterSpec::New(kFlag, ParameterType::Flag));
  return spec;
}

std::string ModelOfList(const Input& input, const std::string& name, const boost::smatch& match,
                        bool forStdin) {
  std::string value;
  if (match.length(1) == 0) {
    std::vector<std::string> values;
    input.GetParameterList(name, values);
    for (const std::string& each : values) {
      value += each;
    }
  } else {
    value = input.GetParameterListAsString(name, *match[1].first, false);
  }
  if (!forStdin) {
    value = ExtensionCommand::SanitizeInput(value);
  }
  return match[2] == "true" ? '"' + value + '"' : value;
}

std::string ModelOfMultiList(const Input& input, const std::string& name,
                             const boost::smatch& match, bool forStdin) {
  const bool isQuoted = match[2] == "true";
  std::vector<std::string> values;
  input.GetParameterList(name, values);
  std::string text;
  for (const std::string& each : values) {
    std::string value = each;
    if (!forStdin) {
      value = isQuoted ? ExtensionCommand::SanitizeChar(value, '"')
                       : ExtensionCommand::SanitizeInput(value);
    }
    text += " " + match[1].str() + " " + (isQuoted ? '"' + value + '"' : value);
  }
  return text;
}

void ModelOfParameter(std::string& text, const Input& input, const std::string& name,
                      bool forStdin) {
  boost::smatch match;
  if (boost::regex_match(text, match, boost::regex("(.*)\\$val\\{" + name + "\\}(.*)"))) {
    const std::string before = match[1];
    const std::string after = match[2];
    std::string value = input.GetParameter(name);
    if (!forStdin && !before.empty() && before.back() == '\'' && after.substr(0, 1) == "'") {
      value = ExtensionCommand::SanitizeChar(value, '\'');
    } else if (!forStdin) {
      value = ExtensionCommand::SanitizeInput(value);
    }
    text = boost::regex_replace(text, boost::regex("\\$val\\{" + name + "\\}"), value,
                                boost::regex_constants::format_literal);
  }
  text = boost::regex_replace(text, boost::regex("\\$if\\{" + name + ",(.+?)\\}"), "$1");
  const std::string list = "\\$list\\{" + name + ",'(.?)',(true|false)\\}";
  if (boost::regex_match(text, match, boost::regex(".*" + list + ".*"))) {
    const std::string value = ModelOfList(input, name, match, forStdin);
    text = boost::regex_replace(text, boost::regex(list), value,
                                boost::regex_constants::format_literal);
  }
  const std::string multiList = "\\$multilist\\{" + name + ",(.+?),(true|false)\\}";
  if (boost::regex_match(text, match, boost::regex(".*" + multiList + ".*"))) {
    const std::string value = ModelOfMultiList(input, name, match, forStdin);
    text = boost::regex_replace(text, boost::regex(multiList), value,
                                boost::regex_constants::format_literal);
  }
}

/// Makes one pass of the removal. Returns whether it removed anything.
bool ModelOfPass(std::string& text) {
  static const boost::regex conditional("\\$if\\{[a-z0-9-]+,.+?\\}");
  bool hasRemoved = false;
  std::size_t brace = text.find('{');
  while (brace != std::string::npos) {
    const std::size_t size =
        ExtensionCommand::FindPairedTokenSize(text.data(), brace, text.size(), '{', '}');
    const std::size_t dollar = text.rfind('$', brace);
    std::size_t next = brace + std::max<std::size_t>(size, 1);
    if (size > 0 && dollar != std::string::npos &&
        boost::regex_match(text.substr(dollar, brace + size - dollar), conditional)) {
      text.erase(dollar, brace + size - dollar);
      next = dollar;
      hasRemoved = true;
    }
    brace = text.find('{', next);
  }
  return hasRemoved;
}

/// Returns the template with the parameters inserted. Values must not contain markers or braces.
std::string ModelOfSubstitution(std::string text, const InputSpec& spec, const Input& input,
                                bool forStdin) {
  static const boost::regex any(".*\\$if\\{[a-z0-9-]+,.+?\\}.*");
  if (text.find('$') == std::string::npos) {
    return text;
  }
  for (const std::shared_ptr<ParameterSpec>& parameter : spec.GetParameters()) {
    if (input.HasParameter(parameter->GetName())) {
      ModelOfParameter(text, input, parameter->GetName(), forStdin);
    }
  }
  while (boost::regex_match(text, any) && ModelOfPass(text)) {
  }
  return text;
}

template <typename Substitute>
std::string ResultOf(Substitute substitute) {
  try {
    return substitute();
  } catch (const KestrelException& error) {
    return std::string("throws ") + error.what();
  }
}

/// Makes a template of random pieces, some of which are complete markers.
std::string MakeTemplate(Random& random) {
  constexpr std::string_view kPieces[] = {
      "$val{", "$if{",  "$list{", "$multilist{", "{",  "}",  "}",  "}",    ",",     "'",
      "$",     "true}", "false}", ",true}",      "',", ",'", "if", "x",    " ",     "\n",
      ";",     "-",     "aa",     "ab",          "li", "ff", "zz", "nope", "{c}",   "${HOME}",
      "$i",    "f{",    "aa,",    "zz,",         "\"", "A",  "''", "\\",   "aa,x}", ",,"};
  constexpr std::string_view kMarkers[] = {
      "$val{aa}",
      "'$val{aa}'",
      "$val{zz}",
      "$val{c-1}",
      "'$val{ab}'",
      "$if{aa,",
      "$if{zz,x}",
      "$if{ff,--f}",
      "$if{nope,x}",
      "$if{ab,-b '$val{ab}'}",
      "$if{li,$list{li,',',true}}",
      "$list{li,',',false}",
      "$list{li,'',true}",
      "$list{lj,''',false}",
      "$list{li,':',true}",
      "$list{aa,';',false}",
      "$multilist{li,--l,true}",
      "$multilist{lj,-j,false}",
      "$multilist{li,a,b,false}",
      "$multilist{li,$val{zz},true}",
      "$multilist{aa,--a,false}",
  };
  std::string text;
  for (std::size_t i = random.Below(12); i > 0; --i) {
    text += random.Chance(50) ? random.Pick(kPieces) : random.Pick(kMarkers);
  }
  if (random.Chance(3)) {
    text += random.Pick(std::vector<std::string>{"$val{li}", "$val{ff}", "$val{lj}"});
  }
  return text;
}

/// Makes a value without braces, in which no "$" can begin a marker.
std::string MakePlainValue(Random& random) {
  std::string value = random.Text("ab '\"$&;\\,\n*\xC3\xA4-", 6);
  if (value.find('$') != std::string::npos) {
    value += 'a';
  }
  return value;
}

template <typename MakeValue>
std::shared_ptr<Input> MakeInput(const std::shared_ptr<InputSpec>& spec, Random& random,
                                 MakeValue makeValue) {
  auto input = Input::New();
  input->SetInputSpec(spec);
  for (const char* name : kScalars) {
    if (random.Chance(60)) {
      input->AddParameter(name, makeValue());
    }
  }
  for (const char* name : kLists) {
    for (std::size_t i = random.Below(4); i > 0; --i) {
      input->AddParameter(name, makeValue());
    }
  }
  if (random.Chance(50)) {
    input->AddParameter(kFlag, "");
  }
  return input;
}

std::string Describe(const std::string& text, const Input& input) {
  std::string description = "template: " + text;
  for (const auto& [name, values] : input.GetParameters()) {
    for (const std::string& value : values) {
      description += "\n" + name + ": " + value;
    }
  }
  return description;
}

TEST(TemplateTextTest, FillsRandomTemplatesAsTheModelDoes) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const auto spec = MakeInputSpec();
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  int changed = 0;
  const int rounds = Rounds(10000, 1000000);
  for (int i = 0; i < rounds && !HasFailure(); ++i) {
    const std::string text = MakeTemplate(random);
    const auto input = MakeInput(spec, random, [&] { return MakePlainValue(random); });
    const bool forStdin = random.Chance(30);
    command->SetExecuteCommand(text);
    command->SetStdin(text);
    const std::string result = ResultOf([&] { return command->SubstituteInput(input, forStdin); });
    changed += result != text ? 1 : 0;
    EXPECT_EQ(result, ResultOf([&] { return ModelOfSubstitution(text, *spec, *input, forStdin); }))
        << Describe(text, *input);
  }
  EXPECT_GT(changed, rounds / 2);
}

// Without parameters, only conditionals are removed.
TEST(TemplateTextTest, CleansAllShortTemplatesAsTheModelDoes) {
  constexpr std::string_view kPieces[] = {"$if{a,", "$if{", "$", "{", "}", "b", ","};
  const auto spec = InputSpec::New();
  const auto input = Input::New();
  std::size_t count = 1;
  for (int i = Rounds(6, 8); i > 0; --i) {
    count *= std::size(kPieces) + 1;
  }
  for (std::size_t number = 0; number < count && !HasFailure(); ++number) {
    std::string text;
    for (std::size_t rest = number; rest > 0; rest /= std::size(kPieces) + 1) {
      const std::size_t piece = rest % (std::size(kPieces) + 1);
      if (piece > 0) {
        text += kPieces[piece - 1];
      }
    }
    EXPECT_EQ(Cleaned(text), ModelOfSubstitution(text, *spec, *input, false)) << text;
  }
}

// In these templates the ends of blocks are removed. The blocks are nested, or follow one another.
TEST(TemplateTextTest, CleansRandomBlocksAsTheModelDoes) {
  constexpr std::string_view kPieces[] = {
      "{", "}",     " }",     "{c}",      "${d}",     "{ ",       "$",  "b",     "$if",
      ",", "$if{a", "$if{a,", "$if{a,b}", "$if{a,} ", "$if{a,b}", "$i", "f{c,d}"};
  constexpr std::string_view kLosses[] = {" $if{a,b} } {c}", " $if{a,b $if{c,d} } }{c}{c}",
                                          " $if{a,b} $if{c,d} } {c}"};
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const auto spec = InputSpec::New();
  const auto input = Input::New();
  for (int i = Rounds(5000, 500000); i > 0 && !HasFailure(); --i) {
    std::string text;
    for (std::size_t left = random.Below(25); left > 0; --left) {
      text += random.Chance(70) ? random.Pick(kPieces) : random.Pick(kLosses);
    }
    EXPECT_EQ(Cleaned(text), ModelOfSubstitution(text, *spec, *input, false)) << text;
  }
}

/// Makes a value of pieces that would be markers, or parts of markers, in a template. It begins and
/// ends with a letter, so that it does not combine with its neighbours.
std::string MakeMarkerValue(Random& random, bool withClosingBraces) {
  constexpr std::string_view kPieces[] = {"$val{zz}",
                                          "$val{aa}",
                                          "$if{zz,",
                                          "$if{nope,",
                                          "$list{li,',',true}",
                                          "$multilist{li,-x,true}",
                                          "{",
                                          "$",
                                          "$if{",
                                          "$val{",
                                          "'",
                                          "\"",
                                          "true",
                                          ",",
                                          "\\",
                                          ";",
                                          "`",
                                          "\n",
                                          "}",
                                          "}",
                                          "},false}"};
  std::string value = "V";
  for (std::size_t i = random.Below(6); i > 0; --i) {
    value += random.Pick(kPieces);
  }
  if (!withClosingBraces) {
    boost::replace_all(value, "}", "");
  }
  return value + "v";
}

/// Makes a template of complete markers. Without `valuesInKeptTexts`, no conditional that is kept
/// contains a value.
std::string MakeCompleteTemplate(Random& random, bool valuesInKeptTexts) {
  constexpr std::string_view kTexts[] = {" ", "x", "{c}", "${HOME}", "'", ";", "$i"};
  constexpr std::string_view kMarkers[] = {"$val{aa}",
                                           "'$val{ab}'",
                                           "$val{c-1}",
                                           "$val{zz}",
                                           "$list{li,',',false}",
                                           "$list{lj,'',true}",
                                           "$multilist{li,--l,false}",
                                           "$multilist{lj,-j,true}"};
  std::string text;
  for (std::size_t i = random.Below(8); i > 0; --i) {
    const std::string_view marker = random.Pick(kMarkers);
    if (random.Chance(30)) {
      text += random.Pick(kTexts);
    } else if (random.Chance(70)) {
      text += marker;
    } else if (valuesInKeptTexts) {
      constexpr const char* kConditions[] = {"aa", "zz", "li", "nope"};
      text += "$if{" + std::string(random.Pick(kConditions)) + ",y " + std::string(marker) + "}";
    } else {
      text += "$if{nope,y " + std::string(marker) + "}";
    }
  }
  return text;
}

/// Returns the same parameters with each value replaced by a unique word, and appends the original
/// values to `values`.
std::shared_ptr<Input> WithWords(const Input& input, const std::shared_ptr<InputSpec>& spec,
                                 std::vector<std::string>& values) {
  auto words = Input::New();
  words->SetInputSpec(spec);
  for (const auto& [name, given] : input.GetParameters()) {
    for (const std::string& value : given) {
      words->AddParameter(name, "<" + std::to_string(values.size()) + ">");
      values.push_back(value);
    }
  }
  return words;
}

TEST(TemplateTextTest, MarkersInValuesAreKeptUnchanged) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const auto spec = MakeInputSpec();
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  for (int i = Rounds(10000, 500000); i > 0 && !HasFailure(); --i) {
    const bool withClosingBraces = random.Chance(50);
    const std::string text = MakeCompleteTemplate(random, !withClosingBraces);
    const auto input =
        MakeInput(spec, random, [&] { return MakeMarkerValue(random, withClosingBraces); });
    command->SetStdin(text);
    std::vector<std::string> values;
    std::string expected = command->SubstituteInput(WithWords(*input, spec, values), true);
    for (std::size_t value = values.size(); value > 0; --value) {
      boost::replace_all(expected, "<" + std::to_string(value - 1) + ">", values[value - 1]);
    }
    EXPECT_EQ(command->SubstituteInput(input, true), expected) << Describe(text, *input);
  }
}

std::string Repeat(std::string_view text, std::size_t size) {
  std::string repeated;
  repeated.reserve(size + text.size());
  while (repeated.size() < size) {
    repeated += text;
  }
  return repeated;
}

// If the time were not linear in the size, this would take hours.
TEST(TemplateTextTest, FillsHostileTemplatesOfAMegabyteInLinearTime) {
  constexpr std::size_t kSize = 1000000;
  const auto spec = MakeInputSpec();
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  const auto input = Input::New();
  input->SetInputSpec(spec);
  for (const char* name : {"aa", "ab", "li", "ff"}) {
    input->AddParameter(name, name);
  }
  const std::string name(kSize / 2, 'a');
  for (const std::string& text : {Repeat("$if{aa,", kSize),
                                  Repeat("$if{zz,", kSize),
                                  Repeat("$if{", kSize),
                                  Repeat("$multilist{li,", kSize),
                                  Repeat("$multilist{li,x", kSize) + ",true",
                                  Repeat("$multilist{li,", kSize / 2) + Repeat(",true,", kSize / 2),
                                  Repeat("$multilist{li,x,true", kSize),
                                  Repeat("$list{li,'", kSize),
                                  Repeat("$list{li,',',", kSize),
                                  Repeat("$val{", kSize),
                                  Repeat("$val{aa", kSize),
                                  Repeat("{", kSize),
                                  Repeat("}", kSize),
                                  Repeat("{}", kSize),
                                  Repeat("{", kSize / 2) + Repeat("}", kSize / 2),
                                  Repeat("$if{zz,", kSize / 2) + Repeat("}", kSize / 2),
                                  Repeat("$if{zz,", kSize / 2) + Repeat("{c}", kSize / 2),
                                  Repeat("$if{zz}", kSize),
                                  "$if{zz,x}" + Repeat("$if{", kSize),
                                  "$if{" + name + Repeat("{c}", kSize / 2),
                                  "$if{zz,x}$" + Repeat("{c}", kSize),
                                  Repeat("$", kSize),
                                  Repeat("$val{aa}$if{aa,x}$list{li,',',true}", kSize),
                                  Repeat("$multilist{li,--l,false}", kSize)}) {
    command->SetExecuteCommand(text);
    EXPECT_FALSE(command->SubstituteInput(input, false).empty());
  }
}

TEST(TemplateTextTest, InsertsHostileValuesOfAMegabyteInLinearTime) {
  constexpr std::size_t kSize = 1000000;
  const auto spec = MakeInputSpec();
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  command->SetExecuteCommand("$if{nope,$val{aa}} '$val{aa}' {$list{li,',',true}} $val{zz}");
  for (const char* piece : {"$val{zz}", "$if{zz,", "$if{nope,", "$multilist{zz,", "$list{zz,", "{",
                            "}", "$", "$if{nope,x}", ",true}"}) {
    const auto input = Input::New();
    input->SetInputSpec(spec);
    const std::string value = Repeat(piece, kSize);
    input->AddParameter("aa", value);
    input->AddParameter("li", "x");
    input->AddParameter("zz", "1");
    EXPECT_TRUE(command->SubstituteInput(input, false) == " '" + value + "' {\"x\"} 1") << piece;
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli

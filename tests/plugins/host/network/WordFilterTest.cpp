// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/WordFilter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/callspec/InputSpec.h>

#include <memory>

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr NumberName kNames[] = {{0, "none"}, {10, "listen"}, {4, "fin-wait-1"}};

WordSet Words() { return WordSet().Numbered(kNames).Word("ESTAB").Alias("open", "ESTAB"); }

struct FoundCase {
  const char* name;
  const char* text;
  const char* word;  // empty if there is none
};

class WordSetTest : public ::testing::TestWithParam<FoundCase> {};

TEST_P(WordSetTest, FindsTheWordOrNothing) {
  const auto found = Words().Find(GetParam().text);
  if (*GetParam().word == '\0') {
    EXPECT_EQ(found, std::nullopt);
  } else {
    EXPECT_THAT(found, Optional(std::string(GetParam().word)));
  }
}

constexpr FoundCase kFoundCases[] = {
    {"AsItIs", "listen", "listen"},
    {"UpperCase", "LISTEN", "listen"},
    {"MixedCase", "LiStEn", "listen"},
    {"LowerCaseOfAnUpperCaseWord", "estab", "ESTAB"},
    {"Alias", "OPEN", "ESTAB"},
    {"UnderscoresForHyphens", "FIN_WAIT_1", "fin-wait-1"},
    {"Number", "10", "listen"},
    {"Zero", "0", "none"},
    {"NumberWithALeadingZero", "010", ""},
    {"UnknownNumber", "5", ""},
    {"UnknownWord", "listening", ""},
    {"StartOfAWord", "lis", ""},
    {"Nothing", "", ""},
    {"SpacesAround", " listen ", ""},
    {"BytesThatAreNotAscii", "l\xc3\xb6sten", ""},
};
INSTANTIATE_TEST_SUITE_P(Texts, WordSetTest, ::testing::ValuesIn(kFoundCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(WordSetTest, ListsTheWordsInTheirOrderWithoutOtherSpellings) {
  EXPECT_EQ(Words().GetList(), "none, listen, fin-wait-1, ESTAB");
  EXPECT_EQ(WordSet().GetList(), "");
}

class WordFilterTest : public ::testing::Test {
 protected:
  WordFilterTest() {
    auto spec = CallSpec::InputSpec::New();
    Parameter("state", CallSpec::StringList, "A state.").AddTo(*spec);
    input_ = CallSpec::Input::New();
    output_ = CallSpec::Output::New();
  }

  WordFilter Filter(const std::vector<std::string>& values) {
    for (const std::string& value : values) {
      input_->AddParameter("state", value);
    }
    return WordFilter(*input_, "state", Words(), *output_);
  }

  std::shared_ptr<CallSpec::Input> input_;
  std::shared_ptr<CallSpec::Output> output_;
};

TEST_F(WordFilterTest, AcceptsEverythingWhenNoneIsGiven) {
  const WordFilter filter = Filter({});
  EXPECT_FALSE(filter.IsGiven());
  EXPECT_TRUE(filter.Accepts("listen"));
  EXPECT_TRUE(filter.Accepts("a state of a later kernel"));
}

TEST_F(WordFilterTest, AcceptsTheGivenWordsOnly) {
  const WordFilter filter = Filter({"Listen", "open"});
  EXPECT_TRUE(filter.IsGiven());
  EXPECT_TRUE(filter.Accepts("listen"));
  EXPECT_TRUE(filter.Accepts("ESTAB"));
  EXPECT_FALSE(filter.Accepts("none"));
  EXPECT_FALSE(filter.Accepts("Listen")) << "rows have the spelling of the set";
  EXPECT_THAT(output_->GetErrors(), IsEmpty());
}

TEST_F(WordFilterTest, ReportsEachUnknownWord) {
  Filter({"shut", "listen", "12"});
  EXPECT_THAT(output_->GetErrors(),
              ElementsAre("There is no such state: 'shut'; --state is one of: none, listen, "
                          "fin-wait-1, ESTAB",
                          "There is no such state: '12'; --state is one of: none, listen, "
                          "fin-wait-1, ESTAB"));
}

}  // namespace
}  // namespace Kestrel::Host

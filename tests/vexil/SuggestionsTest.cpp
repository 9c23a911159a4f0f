// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Suggestions.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/SampleCommands.h"
#include "support/Sanitizer.h"

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Vexil::NodePath;
using Vexil::Words;

class SuggestionsTest : public ::testing::Test {
 protected:
  SuggestionsTest() {
    for (const auto path : {std::initializer_list<const char*>{"file", "checksum"},
                            {"network", "address", "list"},
                            {"network", "route", "list"},
                            {"service", "get"},
                            {"service", "list"},
                            {"storage", "device", "list"},
                            {"storage", "mount", "list"},
                            {"system", "parameter", "get"},
                            {"system", "parameter", "set"}}) {
      RegisterAt(dispatcher_.GetRootNamespace(), path, MakeAnsweringCommand("done"));
    }
  }

  std::vector<std::string> Suggest(const std::string& line) {
    Words words;
    std::istringstream in(line);
    for (std::string word; in >> word;) {
      words.push_back(word);
    }
    return SuggestPaths(Vexil::ListNodePaths(*dispatcher_.GetRootNamespace()), words);
  }

  AutoCli::Dispatcher dispatcher_;
};

TEST_F(SuggestionsTest, CorrectsAWordAnywhereInThePath) {
  EXPECT_THAT(Suggest("storage mout list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("sotrage mount list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("storage mount lists"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("storag mout lst"), ElementsAre("storage mount list"));
}

TEST_F(SuggestionsTest, SuggestsANamespaceForItsMistypedPath) {
  EXPECT_THAT(Suggest("storage mout"), ElementsAre("storage mount"));
  EXPECT_THAT(Suggest("storag"), ElementsAre("storage"));
}

TEST_F(SuggestionsTest, OffersEquallySimilarPathsInByteOrder) {
  EXPECT_THAT(Suggest("system parameter xet"),
              ElementsAre("system parameter get", "system parameter set"));
  EXPECT_THAT(Suggest("storage list"), ElementsAre("storage device list", "storage mount list"));
}

TEST_F(SuggestionsTest, OffersThreePathsAtMost) {
  for (const char* name : {"one", "two", "three", "four"}) {
    RegisterAt(dispatcher_.GetRootNamespace(), {name, "find"}, MakeAnsweringCommand("done"));
  }
  EXPECT_THAT(Suggest("find"), ElementsAre("four find", "one find", "three find"));
}

TEST_F(SuggestionsTest, FindsAWordOnAnotherLevel) {
  EXPECT_THAT(Suggest("mount"), ElementsAre("storage mount"));
  EXPECT_THAT(Suggest("mount list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("storage list mount"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("system mount list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("vexil storage mount list"), ElementsAre("storage mount list"));
}

TEST_F(SuggestionsTest, FindsTheNameOfACommandAnywhere) {
  EXPECT_THAT(Suggest("checksum"), ElementsAre("file checksum"));
  EXPECT_THAT(Suggest("set"), ElementsAre("system parameter set", "service get"));
  EXPECT_THAT(Suggest("system set"), ElementsAre("system parameter set"));
}

TEST_F(SuggestionsTest, AcceptsOtherSeparatorsAndCapitals) {
  EXPECT_THAT(Suggest("storage.mount list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("storage/mount/list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("Storage Mount List"), ElementsAre("storage mount list"));
}

TEST_F(SuggestionsTest, JoinsAndSplitsWordsToFindAPath) {
  EXPECT_THAT(Suggest("storagemount list"), ElementsAre("storage mount list"));
  EXPECT_THAT(Suggest("file check sum"), ElementsAre("file checksum"));
}

TEST_F(SuggestionsTest, KnowsPluralsAndBeginnings) {
  EXPECT_THAT(Suggest("services"), ElementsAre("service"));
  EXPECT_THAT(Suggest("network addresses list"), ElementsAre("network address list"));
  EXPECT_THAT(Suggest("net addr list"), ElementsAre("network address list"));
}

TEST_F(SuggestionsTest, OffersTheCommandWhenWordsFollowIt) {
  EXPECT_THAT(Suggest("service list all"), ElementsAre("service list"));
}

TEST_F(SuggestionsTest, OffersNothingWhenNothingIsSimilar) {
  for (const char* line : {"", "nosuch", "x", "is", "nosuch list", "service nosuch",
                           "nosuch service nosuch", "- --", "storage mount nosuch"}) {
    EXPECT_THAT(Suggest(line), IsEmpty()) << line;
  }
}

TEST_F(SuggestionsTest, OffersNothingForMoreWordsThanAPathHas) {
  std::string line;
  for (int i = 0; i < 100000; ++i) {
    line += "list ";
  }
  EXPECT_THAT(Suggest(line), IsEmpty());
}

TEST_F(SuggestionsTest, TerminatesInATreeThatContainsItself) {
  if (kIsSanitized) {
    GTEST_SKIP() << "a tree that contains itself is never released";
  }
  const auto loop = AutoCli::Namespace::New();
  dispatcher_.GetRootNamespace()->RegisterNamespaceNode(loop, "loop");
  loop->RegisterNamespaceNode(loop, "loop");
  EXPECT_THAT(Suggest("lop"), ElementsAre("loop"));
}

TEST_F(SuggestionsTest, ListsABoundedNumberOfPaths) {
  if (kIsSanitized) {
    GTEST_SKIP() << "a tree that contains itself is never released";
  }
  const auto loop = AutoCli::Namespace::New();
  for (const char* name : {"a1", "b1", "c1"}) {
    loop->RegisterNamespaceNode(loop, name);
  }
  dispatcher_.GetRootNamespace()->RegisterNamespaceNode(loop, "loop");
  EXPECT_THAT(Vexil::ListNodePaths(*dispatcher_.GetRootNamespace()), SizeIs(20000));
}

TEST(DidYouMeanTest, IsOneLineOrNothing) {
  EXPECT_EQ("Did you mean: a b, c d?", Vexil::DidYouMean({"a b", "c d"}));
  EXPECT_EQ("Did you mean: a?", Vexil::DidYouMean({"a"}));
  EXPECT_EQ("", Vexil::DidYouMean({}));
}

}  // namespace

}  // namespace Kestrel::Testing

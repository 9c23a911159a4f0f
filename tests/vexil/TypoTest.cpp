// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Typing errors of a person who knows the path of a command: one edit in one of its words.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/Random.h"
#include "vexil/FindNode.h"
#include "vexil/NodePaths.h"
#include "vexil/ShippedTree.h"
#include "vexil/Suggestions.h"

namespace Kestrel::Testing {

namespace {

using Vexil::NodePath;
using Vexil::Words;

constexpr std::string_view kKeys = "abcdefghijklmnopqrstuvwxyz0123456789";

std::string Join(const Words& words) {
  std::string path;
  for (const std::string& word : words) {
    path += (path.empty() ? "" : " ") + word;
  }
  return path;
}

void Insert(std::string& word, Random& random) {
  word.insert(random.Below(word.size() + 1), 1, random.Pick(kKeys));
}

void Remove(std::string& word, Random& random) { word.erase(random.Below(word.size()), 1); }

void Replace(std::string& word, Random& random) {
  word[random.Below(word.size())] = random.Pick(kKeys);
}

void Swap(std::string& word, Random& random) {
  const std::size_t first = random.Below(word.size() - 1);
  std::swap(word[first], word[first + 1]);
}

void Slip(std::string& word, Random& random) {
  constexpr std::array<void (*)(std::string&, Random&), 4> kEdits = {Insert, Remove, Replace, Swap};
  random.Pick(kEdits)(word, random);
}

class TypoTest : public ::testing::Test {
 protected:
  TypoTest() {
    LoadShippedTree(dispatcher_);
    paths_ = Vexil::ListNodePaths(*dispatcher_.GetRootNamespace());
    std::copy_if(paths_.begin(), paths_.end(), std::back_inserter(commands_),
                 [](const NodePath& path) { return path.isCommand; });
  }

  // Returns `path` with one random edit that makes it the path of no node.
  Words Mistype(const Words& path, Random& random) {
    while (true) {
      Words typed = path;
      Slip(typed[random.Below(typed.size())], random);
      if (Vexil::FindNode(dispatcher_.GetRootNamespace(), typed) == nullptr) {
        return typed;
      }
    }
  }

  AutoCli::Dispatcher dispatcher_;
  std::vector<NodePath> paths_;
  std::vector<NodePath> commands_;
};

TEST_F(TypoTest, TheRightPathIsNearlyAlwaysAmongTheFirstThree) {
  ASSERT_GT(commands_.size(), 40U);
  Random random;
  const int count = Rounds(200, 20000);
  int found = 0;
  std::string missed;
  for (int round = 0; round < count; ++round) {
    const Words& path = random.Pick(commands_).words;
    const Words typed = Mistype(path, random);
    const std::vector<std::string> suggestions = SuggestPaths(paths_, typed);
    const bool isFound =
        std::find(suggestions.begin(), suggestions.end(), Join(path)) != suggestions.end();
    found += isFound ? 1 : 0;
    missed += isFound ? "" : "\n" + Join(typed) + " (" + Join(path) + ")";
  }
  RecordProperty("found", found);
  EXPECT_GE(found * 100, count * 95) << random.HowToRepeat() << missed;
}

}  // namespace

}  // namespace Kestrel::Testing

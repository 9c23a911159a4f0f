// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/Catalog.h"

#include <gtest/gtest.h>

#include <vector>

#include "RandomTree.h"
#include "support/Random.h"

namespace Kestrel::Catalog {
namespace {

using Testing::Random;

Command CommandAt(const char* path) {
  Command command;
  command.path = path;
  return command;
}

TEST(CatalogTest, FindsEachElementByItsPath) {
  Tree tree;
  tree.namespaces = {{"network", "", {}}, {"network route", "", {}}};
  tree.commands = {CommandAt("network route list"), CommandAt("system get")};
  tree.faults = {{"network route get", "", "broken"}};
  EXPECT_EQ(&tree.commands[0], FindCommand(tree, "network route list"));
  EXPECT_EQ(&tree.commands[1], FindCommand(tree, "system get"));
  EXPECT_EQ(&tree.namespaces[1], FindNamespace(tree, "network route"));
  EXPECT_EQ(&tree.faults[0], FindFault(tree, "network route get"));
}

TEST(CatalogTest, FindsNothingAtAnotherPath) {
  Tree tree;
  tree.namespaces = {{"network", "", {}}};
  tree.commands = {CommandAt("network list")};
  for (const char* const path : {"", "network", "network li", "network list all", "system"}) {
    EXPECT_EQ(nullptr, FindCommand(tree, path)) << path;
    EXPECT_EQ(nullptr, FindFault(tree, path)) << path;
  }
  EXPECT_EQ(nullptr, FindNamespace(tree, "network list"));
  EXPECT_EQ(nullptr, FindCommand(Tree(), "network list"));
}

TEST(CatalogTest, ATreeEqualsItsCopyAndNoOtherOne) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  for (int round = Testing::Rounds(200, 5000); round > 0; --round) {
    const Tree tree = MakeRandomTree(random);
    const Tree copy = tree;
    ASSERT_TRUE(tree == copy);
    ASSERT_FALSE(tree == MakeChangedTree(tree, random));
  }
}

}  // namespace
}  // namespace Kestrel::Catalog

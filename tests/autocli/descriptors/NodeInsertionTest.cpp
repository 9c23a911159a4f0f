// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/NodeInsertion.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/SampleCommands.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::MakeAnsweringCommand;

std::shared_ptr<Namespace> MakeNamespace(const std::string& description) {
  const std::shared_ptr<Namespace> made = Namespace::New();
  made->SetDescription(description);
  return made;
}

class NodeInsertionTest : public testing::Test {
 protected:
  NodeInsertionTest() { InsertNode("disk", registered_, root_); }

  const std::shared_ptr<Namespace> root_ = RootNamespace::New(nullptr);
  const std::shared_ptr<Namespace> registered_ = MakeNamespace("Disks");
};

TEST_F(NodeInsertionTest, UsesATopLevelNamespaceWithTheSameDescription) {
  InsertNode("disk", MakeNamespace("Disks"), root_);
  EXPECT_EQ(root_->GetNamespaceNode("disk"), registered_);
}

TEST_F(NodeInsertionTest, RefusesATopLevelNamespaceWithAnotherDescription) {
  EXPECT_THROW(InsertNode("disk", MakeNamespace("Other"), root_), KestrelException);
  EXPECT_EQ(root_->GetNamespaceNode("disk"), registered_);
}

TEST_F(NodeInsertionTest, RefusesACommandInPlaceOfATopLevelNamespace) {
  EXPECT_THROW(InsertNode("disk", MakeAnsweringCommand("done"), root_), KestrelException);
  EXPECT_EQ(root_->GetNamespaceNode("disk"), registered_);
}

TEST_F(NodeInsertionTest, RefusesANamespaceInPlaceOfATopLevelCommand) {
  const auto command = MakeAnsweringCommand("done");
  InsertNode("list", command, root_);
  EXPECT_THROW(InsertNode("list", MakeNamespace("Lists"), root_), KestrelException);
  EXPECT_EQ(root_->GetNamespaceNode("list"), command);
}

TEST_F(NodeInsertionTest, InsertsBelowItsParent) {
  const auto command = MakeAnsweringCommand("done");
  InsertNode("disk.list", command, root_);
  EXPECT_EQ(registered_->GetNamespaceNode("list"), command);
}

TEST_F(NodeInsertionTest, RefusesADeeperNamespaceEvenWithTheSameDescription) {
  InsertNode("disk.cache", MakeNamespace("Caches"), root_);
  EXPECT_THROW(InsertNode("disk.cache", MakeNamespace("Caches"), root_), KestrelException);
}

TEST_F(NodeInsertionTest, RefusesAnEmptyPath) {
  EXPECT_THROW(InsertNode("", MakeNamespace("None"), root_), KestrelException);
}

}  // namespace
}  // namespace Kestrel::AutoCli

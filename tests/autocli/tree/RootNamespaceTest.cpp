// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/RootNamespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>

#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

TEST(RootNamespaceTest, IsOfTheKindRoot) {
  EXPECT_EQ(RootNamespace::New(nullptr)->GetType(), NodeType::Root);
  EXPECT_EQ(RootNamespace::New(nullptr)->GetType(), 0);
}

TEST(RootNamespaceTest, ReturnsAnOwnerOfItself) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  EXPECT_EQ(root->GetThis(), root);
}

TEST(RootNamespaceTest, HasAnEmptyNameAndAnEmptyPath) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  EXPECT_EQ(root->GetName(), "");
  EXPECT_THAT(root->GetPath(), IsEmpty());
  EXPECT_EQ(root->GetPathString('.'), "");
}

TEST(RootNamespaceTest, KeepsItsDispatcher) {
  // The tree returns the pointer and never dereferences it.
  int place = 0;
  auto* const dispatcher = reinterpret_cast<Dispatcher*>(&place);
  EXPECT_EQ(RootNamespace::New(dispatcher)->GetDispatcher(), dispatcher);
  EXPECT_EQ(RootNamespace::New(nullptr)->GetDispatcher(), nullptr);
}

TEST(RootNamespaceTest, RefusesAParent) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  const std::string refusal = "Error, Root namespace cannot be assigned a parent node";
  EXPECT_THAT([&] { root->SetParent(Namespace::New()); }, ThrowsMessage<KestrelException>(refusal));
  EXPECT_THAT([&] { root->SetParent(nullptr); }, ThrowsMessage<KestrelException>(refusal));
  EXPECT_EQ(root->GetParent(), nullptr);
}

TEST(RootNamespaceTest, IsNeverTheResultOfAResolution) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  std::list<std::string> path;
  EXPECT_EQ(root->ResolveNode(path), nullptr);
}

TEST(RootNamespaceTest, ItsChildrenHavePathsOfOneWordWhateverItsName) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  // A failed registration leaves the root with a name, which must not appear in paths.
  EXPECT_THROW(Namespace::New()->RegisterNamespaceNode(root, "named"), KestrelException);
  EXPECT_EQ(root->GetName(), "named");
  const std::shared_ptr<NamespaceNode> child = root->SubNamespace("network");
  EXPECT_THAT(child->GetPath(), ElementsAre("network"));
  EXPECT_EQ(child->GetPathString('.'), "network");
}

}  // namespace
}  // namespace Kestrel::AutoCli

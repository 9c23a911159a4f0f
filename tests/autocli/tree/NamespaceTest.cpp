// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/RootNamespace.h"

namespace Kestrel::AutoCli {
namespace {

using testing::IsEmpty;
using testing::ThrowsMessage;

static_assert(!std::is_default_constructible<Namespace>::value, "only New makes one");
static_assert(!std::is_copy_constructible<Namespace>::value, "a copy would share the children");

TEST(NamespaceTest, NewMakesANodeWithoutNameParentAndChildren) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  EXPECT_EQ(node->GetThis(), node);
  EXPECT_EQ(node->GetName(), "");
  EXPECT_EQ(node->GetParent(), nullptr);
  EXPECT_THAT(node->GetNamespaceNodes(), IsEmpty());
}

TEST(NamespaceTest, IsOfTheKindNamespace) {
  EXPECT_EQ(Namespace::New()->GetType(), NodeType::Namespace);
  EXPECT_EQ(Namespace::New()->GetType(), 1);
}

class DerivedNamespace : public Namespace {};

TEST(NamespaceTest, GetThisThrowsWhenTheNodeHasNoOwner) {
  DerivedNamespace node;
  EXPECT_THROW(node.GetThis(), std::bad_weak_ptr);
}

TEST(NamespaceTest, WithoutParentItHasNoPathAndNoDispatcher) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  EXPECT_THAT([&] { node->GetPath(); },
              ThrowsMessage<KestrelException>("GetPath: Invalid state for Namespace Node with the "
                                              "name '' No parent node has been set"));
  EXPECT_THAT(
      [&] { node->GetPathString(' '); },
      ThrowsMessage<KestrelException>("GetPathString: Invalid state for Namespace Node with the "
                                      "name '' No parent node has been set"));
  EXPECT_THAT([&] { node->GetDispatcher(); },
              ThrowsMessage<KestrelException>(
                  "Invalid state for namespace 'no parent has been set while attempting to get "
                  "dispathcer reference."));
}

TEST(NamespaceTest, AParentThatIsGoneCountsAsNone) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  node->SubNamespace("below");
  {
    const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
    root->RegisterNamespaceNode(node, "orphan");
    EXPECT_EQ(node->GetParent(), root);
  }
  EXPECT_EQ(node->GetParent(), nullptr);
  EXPECT_TRUE(node->HasNamespaceNode("below"));
  EXPECT_THAT([&] { node->GetPath(); },
              ThrowsMessage<KestrelException>("GetPath: Invalid state for Namespace Node with the "
                                              "name 'orphan' No parent node has been set"));
  EXPECT_THAT(
      [&] { node->GetPathString('.'); },
      ThrowsMessage<KestrelException>("GetPathString: Invalid state for Namespace Node with the "
                                      "name 'orphan' No parent node has been set"));
  EXPECT_THAT([&] { node->GetDispatcher(); },
              ThrowsMessage<KestrelException>(
                  "Invalid state for namespace 'orphanno parent has been set while attempting to "
                  "get dispathcer reference."));
}

TEST(NamespaceTest, SetParentReplacesAnEarlierParentAndAcceptsNull) {
  const std::shared_ptr<Namespace> first = Namespace::New();
  const std::shared_ptr<Namespace> second = Namespace::New();
  const std::shared_ptr<Namespace> node = Namespace::New();
  node->SetParent(first);
  node->SetParent(second);
  EXPECT_EQ(node->GetParent(), second);
  node->SetParent(nullptr);
  EXPECT_EQ(node->GetParent(), nullptr);
}

TEST(NamespaceTest, TheRequestForTheDispatcherClimbsToTheRoot) {
  // The tree returns the pointer and never dereferences it.
  int place = 0;
  auto* const dispatcher = reinterpret_cast<Dispatcher*>(&place);
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(dispatcher);
  EXPECT_EQ(root->SubNamespace("network")->SubNamespace("ip")->GetDispatcher(), dispatcher);
}

}  // namespace
}  // namespace Kestrel::AutoCli

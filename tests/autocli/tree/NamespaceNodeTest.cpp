// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/NamespaceNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/autocli/Util.h"
#include "support/Random.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

using Words = std::list<std::string>;

std::string InvalidNameMessage(const std::string& name) {
  return "Invalid name for namespace '" + name +
         "', must be a name consisting of letters and numbers and must conform to 'camel' casing.";
}

// A root with the path "network ip list" below it. In these tests, "list" is a namespace.
class NamespaceNodeTest : public testing::Test {
 protected:
  std::shared_ptr<RootNamespace> root_ = RootNamespace::New(nullptr);
  std::shared_ptr<NamespaceNode> network_ = root_->SubNamespace("network");
  std::shared_ptr<NamespaceNode> ip_ = network_->SubNamespace("ip");
  std::shared_ptr<NamespaceNode> list_ = ip_->SubNamespace("list");
};

// Names.

struct NameCase {
  const char* label;
  std::string name;
  bool valid;
};

class NamespaceNodeNameTest : public testing::TestWithParam<NameCase> {};

TEST_P(NamespaceNodeNameTest, IsCheckedAlikeByTheFunctionAndByTheNode) {
  const NameCase& row = GetParam();
  EXPECT_EQ(AutoCli_IsValidName(row.name), row.valid);

  const std::shared_ptr<Namespace> node = Namespace::New();
  node->SetName("before");
  if (row.valid) {
    node->SetName(row.name);
    EXPECT_EQ(node->GetName(), row.name);
    return;
  }
  // what() returns a C string, so it ends at the NUL.
  EXPECT_THAT([&] { node->SetName(row.name); },
              ThrowsMessage<KestrelException>(InvalidNameMessage(row.name).c_str()));
  EXPECT_EQ(node->GetName(), "before");
}

INSTANTIATE_TEST_SUITE_P(Names, NamespaceNodeNameTest,
                         testing::ValuesIn(std::vector<NameCase>{
                             // Shortest and long names.
                             {"Empty", "", false},
                             {"OneLower", "a", true},
                             {"OneDigit", "7", true},
                             {"OneUpper", "A", false},
                             {"Long", std::string(27000, 'a'), true},
                             {"LongAndWrongAtTheEnd", std::string(27000, 'a') + "_", false},
                             // Camel case.
                             {"AllLower", "list", true},
                             {"Camel", "fooBar", true},
                             {"DigitLast", "ipv4", true},
                             {"DigitFirst", "3com", true},
                             {"UpperLast", "fooB", true},
                             {"Alternating", "a1B2c", true},
                             {"UpperFirst", "FooBar", false},
                             {"TwoUpper", "fooBAR", false},
                             {"TwoUpperInside", "nicIPv4", false},
                             {"UpperAfterDigit", "3Com", true},
                             // Other bytes.
                             {"Dash", "foo-bar", false},
                             {"Underscore", "foo_bar", false},
                             {"Space", "foo bar", false},
                             {"LineEndLast", "foo\n", false},
                             {"NulInside", std::string("a\0b", 3), false},
                             {"NotAscii", "stra\xc3\x9f\x65", false},
                         }),
                         [](const auto& row) { return row.param.label; });

TEST_F(NamespaceNodeTest, NameAndDescriptionAreEmptyAtFirst) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  EXPECT_EQ(node->GetName(), "");
  EXPECT_EQ(node->GetDescription(), "");
}

TEST_F(NamespaceNodeTest, DescriptionIsStoredUnchanged) {
  ip_->SetDescription(std::string("Line one\nline two\0end", 21));
  EXPECT_EQ(ip_->GetDescription(), std::string("Line one\nline two\0end", 21));
  ip_->SetDescription("  %x  ");
  EXPECT_EQ(ip_->GetDescription(), "  %x  ");
  ip_->SetDescription(static_cast<const char*>(nullptr));
  EXPECT_EQ(ip_->GetDescription(), "");
}

// Registration.

TEST_F(NamespaceNodeTest, RegisteringSetsTheNameAndTheParent) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  ip_->RegisterNamespaceNode(node, std::string("route"));
  EXPECT_EQ(node->GetName(), "route");
  EXPECT_EQ(node->GetParent(), ip_);
  EXPECT_EQ(ip_->GetNamespaceNode("route"), node);
  EXPECT_EQ(node->GetPathString(' '), "network ip route");
}

TEST_F(NamespaceNodeTest, RegisteringASecondNodeWithTheSameNameInTheRootThrows) {
  const std::shared_ptr<Namespace> first = Namespace::New();
  root_->RegisterNamespaceNode(first, "fooBar");
  const std::shared_ptr<Namespace> second = Namespace::New();
  EXPECT_THAT([&] { root_->RegisterNamespaceNode(second, "fooBar"); },
              ThrowsMessage<KestrelException>("Duplicate registration in namespace  attempt to "
                                              "register two objects with name fooBar"));
  EXPECT_EQ(root_->GetNamespaceNode("fooBar"), first);
  EXPECT_EQ(second->GetName(), "");
  EXPECT_EQ(second->GetParent(), nullptr);
}

TEST_F(NamespaceNodeTest, ADuplicateBelowTheRootNamesThePathWithSpaces) {
  EXPECT_THAT([&] { ip_->RegisterNamespaceNode(Namespace::New(), "list"); },
              ThrowsMessage<KestrelException>("Duplicate registration in namespace network ip "
                                              "attempt to register two objects with name list"));
}

TEST_F(NamespaceNodeTest, NamesThatDifferInCaseAreNotDuplicates) {
  ip_->SubNamespace("fooBar");
  ip_->RegisterNamespaceNode(Namespace::New(), "foobar");
  EXPECT_THAT(ip_->GetNamespaceNodeNames(), ElementsAre("fooBar", "foobar", "list"));
}

TEST_F(NamespaceNodeTest, RegisteringNullThrows) {
  EXPECT_THAT([&] { ip_->RegisterNamespaceNode(nullptr, "route"); },
              ThrowsMessage<KestrelException>(
                  "Null namespace node named 'route' passed to namespace network ip"));
  EXPECT_THAT(
      [&] { root_->RegisterNamespaceNode(nullptr, std::string("route")); },
      ThrowsMessage<KestrelException>("Null namespace node named 'route' passed to namespace "));
  EXPECT_FALSE(ip_->HasNamespaceNode("route"));
}

TEST_F(NamespaceNodeTest, ADuplicateIsReportedBeforeANullNode) {
  EXPECT_THAT([&] { ip_->RegisterNamespaceNode(nullptr, "list"); },
              ThrowsMessage<KestrelException>("Duplicate registration in namespace network ip "
                                              "attempt to register two objects with name list"));
}

TEST_F(NamespaceNodeTest, ANullNodeIsReportedBeforeAnInvalidName) {
  EXPECT_THAT([&] { ip_->RegisterNamespaceNode(nullptr, "No_Name"); },
              ThrowsMessage<KestrelException>(
                  "Null namespace node named 'No_Name' passed to namespace network ip"));
}

TEST_F(NamespaceNodeTest, AnInvalidNameIsReportedBeforeARootAsChild) {
  const std::shared_ptr<RootNamespace> other = RootNamespace::New(nullptr);
  EXPECT_THAT([&] { ip_->RegisterNamespaceNode(other, "No_Name"); },
              ThrowsMessage<KestrelException>(InvalidNameMessage("No_Name")));
  EXPECT_EQ(other->GetName(), "");
}

TEST_F(NamespaceNodeTest, RegisteringUnderAnInvalidNameLinksNothing) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  EXPECT_THAT([&] { ip_->RegisterNamespaceNode(node, "Route"); },
              ThrowsMessage<KestrelException>(InvalidNameMessage("Route")));
  EXPECT_EQ(node->GetName(), "");
  EXPECT_EQ(node->GetParent(), nullptr);
  EXPECT_THAT(ip_->GetNamespaceNodeNames(), ElementsAre("list"));
}

TEST_F(NamespaceNodeTest, RegisteringARootThrowsAfterItsNameHasChanged) {
  const std::shared_ptr<RootNamespace> other = RootNamespace::New(nullptr);
  EXPECT_THAT(
      [&] { ip_->RegisterNamespaceNode(other, "other"); },
      ThrowsMessage<KestrelException>("Error, Root namespace cannot be assigned a parent node"));
  EXPECT_EQ(other->GetName(), "other");
  EXPECT_THAT(ip_->GetNamespaceNodeNames(), ElementsAre("list"));
}

TEST_F(NamespaceNodeTest, ANullCStringCountsAsTheEmptyName) {
  EXPECT_THAT(
      [&] { ip_->RegisterNamespaceNode(Namespace::New(), static_cast<const char*>(nullptr)); },
      ThrowsMessage<KestrelException>(InvalidNameMessage("")));
}

TEST_F(NamespaceNodeTest, MessagesOfAnUnregisteredNamespaceReportItsMissingParent) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  node->SubNamespace("list");
  const std::string noParent =
      "GetPathString: Invalid state for Namespace Node with the name '' No parent node has been "
      "set";
  EXPECT_THAT([&] { node->RegisterNamespaceNode(Namespace::New(), "list"); },
              ThrowsMessage<KestrelException>(noParent));
  EXPECT_THAT([&] { node->RegisterNamespaceNode(nullptr, "other"); },
              ThrowsMessage<KestrelException>(noParent));
  EXPECT_THAT(
      [&] {
        Words path{"bogus"};
        node->ResolveNode(path);
      },
      ThrowsMessage<KestrelException>(noParent));
}

// A namespace that records the names registered in it.
class NotingNamespace : public Namespace {
 public:
  using Namespace::RegisterNamespaceNode;

  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) override {
    noted.push_back(name);
    Namespace::RegisterNamespaceNode(std::move(node), std::move(name));
  }

  std::vector<std::string> noted;
};

TEST_F(NamespaceNodeTest, EveryRegistrationCallsTheOverloadForStrings) {
  const auto node = std::make_shared<NotingNamespace>();
  node->RegisterNamespaceNode(Namespace::New(), "first");
  node->SubNamespace("second");
  NamespaceNode& base = *node;
  base.RegisterNamespaceNode(Namespace::New(), "third");
  EXPECT_THAT(node->noted, ElementsAre("first", "second", "third"));
}

TEST_F(NamespaceNodeTest, RegisteringElsewhereChangesTheParentAndKeepsTheOldEntry) {
  network_->RegisterNamespaceNode(list_, "every");
  EXPECT_EQ(list_->GetName(), "every");
  EXPECT_EQ(list_->GetParent(), network_);
  EXPECT_EQ(list_->GetPathString(' '), "network every");
  EXPECT_EQ(ip_->GetNamespaceNode("list"), list_);
}

// Lookups.

TEST_F(NamespaceNodeTest, ChildrenAreListedInByteOrderOfTheirNames) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  const std::shared_ptr<NamespaceNode> zeta = node->SubNamespace("zeta");
  const std::shared_ptr<NamespaceNode> alpha = node->SubNamespace("alpha");
  const std::shared_ptr<NamespaceNode> mid = node->SubNamespace("mid");
  EXPECT_THAT(node->GetNamespaceNodeNames(), ElementsAre("alpha", "mid", "zeta"));
  EXPECT_THAT(node->GetNamespaceNodes(), ElementsAre(alpha, mid, zeta));
}

TEST_F(NamespaceNodeTest, ByteOrderPutsDigitsBeforeUpperCaseBeforeLowerCase) {
  const std::shared_ptr<Namespace> node = Namespace::New();
  for (const char* name : {"ab", "aB", "a1", "a"}) {
    node->SubNamespace(name);
  }
  EXPECT_THAT(node->GetNamespaceNodeNames(), ElementsAre("a", "a1", "aB", "ab"));
}

TEST_F(NamespaceNodeTest, ANodeWithoutChildrenListsNothing) {
  EXPECT_THAT(list_->GetNamespaceNodeNames(), IsEmpty());
  EXPECT_THAT(list_->GetNamespaceNodes(), IsEmpty());
}

TEST_F(NamespaceNodeTest, AChildIsFoundByItsExactNameOnly) {
  EXPECT_TRUE(ip_->HasNamespaceNode("list"));
  EXPECT_EQ(ip_->GetNamespaceNode("list"), list_);
  for (const std::string& name : {std::string("lis"), std::string("List"), std::string("list "),
                                  std::string(""), std::string("list\0", 5)}) {
    EXPECT_FALSE(ip_->HasNamespaceNode(name)) << name;
    EXPECT_EQ(ip_->GetNamespaceNode(name), nullptr) << name;
  }
}

TEST_F(NamespaceNodeTest, SubNamespaceMakesANodeOnceAndReturnsItAgain) {
  const std::shared_ptr<NamespaceNode> storage = root_->SubNamespace("storage");
  EXPECT_EQ(storage->GetType(), NodeType::Namespace);
  EXPECT_EQ(storage->GetDescription(), "");
  EXPECT_EQ(storage->GetParent(), root_);
  EXPECT_EQ(root_->SubNamespace("storage"), storage);
  EXPECT_THAT(root_->GetNamespaceNodeNames(), ElementsAre("network", "storage"));
}

TEST_F(NamespaceNodeTest, SubNamespaceWithAnInvalidNameAddsNothing) {
  EXPECT_THAT([&] { root_->SubNamespace("Storage"); },
              ThrowsMessage<KestrelException>(InvalidNameMessage("Storage")));
  EXPECT_THAT(root_->GetNamespaceNodeNames(), ElementsAre("network"));
}

// Paths.

TEST_F(NamespaceNodeTest, PathsStartBelowTheRoot) {
  EXPECT_THAT(network_->GetPath(), ElementsAre("network"));
  EXPECT_EQ(network_->GetPathString('.'), "network");
  EXPECT_THAT(list_->GetPath(), ElementsAre("network", "ip", "list"));
  EXPECT_EQ(list_->GetPathString(' '), "network ip list");
  EXPECT_EQ(list_->GetPathString('.'), "network.ip.list");
}

TEST_F(NamespaceNodeTest, PathsNeedAParentAllTheWayUp) {
  const std::shared_ptr<Namespace> top = Namespace::New();
  const std::shared_ptr<NamespaceNode> below = top->SubNamespace("below");
  EXPECT_THAT([&] { below->GetPath(); },
              ThrowsMessage<KestrelException>("GetPath: Invalid state for Namespace Node with the "
                                              "name '' No parent node has been set"));
  top->SetName("top");
  EXPECT_THAT(
      [&] { below->GetPathString(' '); },
      ThrowsMessage<KestrelException>("GetPathString: Invalid state for Namespace Node with the "
                                      "name 'top' No parent node has been set"));
}

// Resolution.

TEST_F(NamespaceNodeTest, ResolvingDoesNotChangeTheWords) {
  Words path{"network", "ip", "list"};
  EXPECT_EQ(root_->ResolveNode(path), list_);
  EXPECT_THAT(path, ElementsAre("network", "ip", "list"));
}

TEST_F(NamespaceNodeTest, ResolvingStartsBelowTheCalledNode) {
  Words path{"list"};
  EXPECT_EQ(ip_->ResolveNode(path), list_);
  EXPECT_THAT(path, ElementsAre("list"));
}

TEST_F(NamespaceNodeTest, ResolvingAnEmptyPathReturnsNull) {
  Words path;
  EXPECT_EQ(root_->ResolveNode(path), nullptr);
  EXPECT_EQ(list_->ResolveNode(path), nullptr);
  EXPECT_THAT(path, IsEmpty());
}

TEST_F(NamespaceNodeTest, ResolvingAnUnknownWordNamesTheNamespaceThatLacksIt) {
  Words path{"network", "bogus"};
  EXPECT_THAT([&] { root_->ResolveNode(path); },
              ThrowsMessage<KestrelException>("Unable to find a command or namespace with the name "
                                              "'bogus' in namespace network"));
}

TEST_F(NamespaceNodeTest, TheMessageAboutAnUnknownFirstWordEndsWithASpace) {
  Words path{"bogus"};
  EXPECT_THAT([&] { root_->ResolveNode(path); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a command or namespace with the name 'bogus' in namespace "));
}

TEST_F(NamespaceNodeTest, AFailedResolutionConsumesTheWordsUpToTheUnknownOne) {
  Words path{"network", "bogus", "ip", "list"};
  EXPECT_THROW(root_->ResolveNode(path), KestrelException);
  EXPECT_THAT(path, ElementsAre("ip", "list"));
}

TEST_F(NamespaceNodeTest, ResolvingAnEmptyWordFindsNothing) {
  Words path{"network", ""};
  EXPECT_THAT([&] { root_->ResolveNode(path); },
              ThrowsMessage<KestrelException>(
                  "Unable to find a command or namespace with the name '' in namespace network"));
}

// Lifetime.

TEST_F(NamespaceNodeTest, ParentsOwnTheirChildren) {
  const std::weak_ptr<NamespaceNode> list = list_;
  network_.reset();
  ip_.reset();
  list_.reset();
  EXPECT_FALSE(list.expired());
  root_.reset();
  EXPECT_TRUE(list.expired());
}

TEST_F(NamespaceNodeTest, ChildrenDoNotKeepTheirParentAlive) {
  const std::weak_ptr<NamespaceNode> network = network_;
  root_.reset();
  network_.reset();
  EXPECT_TRUE(network.expired());
  EXPECT_EQ(ip_->GetParent(), nullptr);
  EXPECT_EQ(ip_->GetNamespaceNode("list"), list_);
}

// Hostile sizes.

TEST_F(NamespaceNodeTest, HandlesNamespacesThousandsDeep) {
  constexpr int kDepth = 5000;
  Words path;
  std::string dotted;
  std::shared_ptr<NamespaceNode> node = root_;
  for (int level = 0; level < kDepth; ++level) {
    path.push_back("level" + std::to_string(level));
    dotted += (level == 0 ? "" : ".") + path.back();
    node = node->SubNamespace(path.back());
  }
  EXPECT_EQ(root_->ResolveNode(path), node);
  EXPECT_EQ(path.size(), static_cast<std::size_t>(kDepth));
  EXPECT_EQ(node->GetPath(), path);
  EXPECT_EQ(node->GetPathString('.'), dotted);
  EXPECT_EQ(node->GetDispatcher(), nullptr);
}

TEST_F(NamespaceNodeTest, HandlesAHundredThousandChildren) {
  constexpr int kCount = 100000;
  for (int i = 0; i < kCount; ++i) {
    list_->RegisterNamespaceNode(Namespace::New(), "child" + std::to_string(i));
  }
  const std::vector<std::string> names = list_->GetNamespaceNodeNames();
  EXPECT_EQ(names.size(), static_cast<std::size_t>(kCount));
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  Words path{"network", "ip", "list", "child99999"};
  EXPECT_EQ(root_->ResolveNode(path)->GetName(), "child99999");
}

TEST_F(NamespaceNodeTest, HandlesNamesOfAMillionBytes) {
  const std::string name(1000000, 'n');
  const std::shared_ptr<NamespaceNode> node = list_->SubNamespace(name);
  Words path{"network", "ip", "list", name};
  EXPECT_EQ(root_->ResolveNode(path), node);
  EXPECT_EQ(node->GetPathString(' '), "network ip list " + name);
}

TEST_F(NamespaceNodeTest, HandlesPathsOfAHundredThousandWords) {
  Words path{"network", "ip", "list"};
  path.resize(100000, "word");
  EXPECT_THAT([&] { root_->ResolveNode(path); },
              ThrowsMessage<KestrelException>("Unable to find a command or namespace with the name "
                                              "'word' in namespace network ip list"));
  EXPECT_EQ(path.size(), 99996U);
}

// Comparison with a model.

// The model of a tree: a map from a path to the paths of the children.
using Model = std::map<std::string, std::vector<std::string>>;

Words Split(const std::string& path) {
  Words words;
  for (std::size_t start = 0; start < path.size();) {
    const std::size_t end = std::min(path.find(' ', start), path.size());
    words.push_back(path.substr(start, end - start));
    start = end + 1;
  }
  return words;
}

void ExpectSameTree(const std::shared_ptr<NamespaceNode>& node, const std::string& path,
                    const Model& model) {
  std::vector<std::string> children;
  for (const std::shared_ptr<NamespaceNode>& child : node->GetNamespaceNodes()) {
    children.push_back(child->GetPathString(' '));
    ExpectSameTree(child, children.back(), model);
  }
  EXPECT_EQ(children, model.at(path));
  EXPECT_EQ(node->GetPathString(' '), path);
  EXPECT_EQ(node->GetPath(), Split(path));
}

TEST(NamespaceNodeModelTest, RandomTreesHaveTheNodesAndPathsOfTheirModels) {
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const std::vector<std::string> names = {"a", "b", "aB", "a1", "list", "zeta", "9x"};

  for (int round = 0; round < 20; ++round) {
    const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
    Model model{{"", {}}};
    for (int step = 0; step < 200; ++step) {
      // Resolves a random path of at most four words. Sometimes makes its missing nodes first,
      // otherwise expects an exception if one is missing.
      const bool make = random.Below(3) != 0;
      std::string path;
      std::shared_ptr<NamespaceNode> node = root;
      Words words;
      bool known = true;
      for (std::size_t length = 1 + random.Below(4); length > 0; --length) {
        const std::string& name = random.Pick(names);
        const std::string parent = path;
        path += (path.empty() ? "" : " ") + name;
        words.push_back(name);
        if (make) {
          node = node->SubNamespace(name);
          if (model.emplace(path, Model::mapped_type()).second) {
            std::vector<std::string>& siblings = model[parent];
            siblings.insert(std::upper_bound(siblings.begin(), siblings.end(), path), path);
          }
        }
        known = known && model.count(path) != 0;
      }
      if (known) {
        EXPECT_EQ(root->ResolveNode(words)->GetPathString(' '), path);
        EXPECT_EQ(words, Split(path));
      } else {
        EXPECT_THROW(root->ResolveNode(words), KestrelException);
      }
    }
    ExpectSameTree(root, "", model);
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli

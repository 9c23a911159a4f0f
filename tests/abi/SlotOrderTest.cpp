// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Checks the order of the virtual operations in the classes that a plug-in derives from. A compiled
// plug-in contains tables in this order. If a change makes a test here fail, it needs a new
// KESTREL_PLUGIN_ABI.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Version.h"
#include "kestrel/autocli/PluginEntryPoint.h"
#include "kestrel/kestrel.h"

namespace Kestrel {
namespace {

using AutoCli::Command;
using AutoCli::CommandSpec;
using AutoCli::Formatter;
using AutoCli::Namespace;
using AutoCli::NamespaceNode;
using AutoCli::Plugin;
using CallSpec::CallTarget;
using CallSpec::CallTargetSpec;
using NodePtr = std::shared_ptr<NamespaceNode>;

static_assert(KESTREL_PLUGIN_ABI == KESTREL_VERSION_MAJOR,
              "a plug-in that needs another SOVERSION of the library is refused");

/// Returns the place of a virtual operation in the table of its class. In the C++ ABI of gcc and
/// clang, a pointer to a virtual operation contains the offset of this place in bytes. Most
/// machines add one, because an odd number marks the operation as virtual; the division drops it.
template <typename Operation>
std::ptrdiff_t SlotOf(Operation operation) {
  std::ptrdiff_t words[2];
  static_assert(sizeof operation == sizeof words, "a pointer and an adjustment");
  std::memcpy(words, &operation, sizeof words);
  return words[0] / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <typename... Operations>
std::vector<std::ptrdiff_t> SlotsOf(Operations... operations) {
  return {SlotOf(operations)...};
}

// The first two slots are those of the destructor. The last operation of each list below is the
// first one that a derived class adds, which shows that the class has no more operations.
MATCHER(FollowTheDestructor, "") {
  for (std::size_t i = 0; i < arg.size(); ++i) {
    if (arg[i] != static_cast<std::ptrdiff_t>(i) + 2) {
      *result_listener << "operation " << i << " is in slot " << arg[i];
      return false;
    }
  }
  return true;
}

template <typename Class>
struct Extended : Class {
  virtual void End() = 0;
};

using RegisterString = void (NamespaceNode::*)(NodePtr, std::string);
using RegisterText = void (NamespaceNode::*)(NodePtr, const char*);

std::vector<std::ptrdiff_t> SlotsOfNode() {
  return SlotsOf(&NamespaceNode::GetThis, &NamespaceNode::GetType, &NamespaceNode::GetPath,
                 &NamespaceNode::GetPathString, &NamespaceNode::HasNamespaceNode,
                 &NamespaceNode::GetNamespaceNodeNames, &NamespaceNode::GetNamespaceNodes,
                 &NamespaceNode::GetNamespaceNode,
                 static_cast<RegisterString>(&NamespaceNode::RegisterNamespaceNode),
                 static_cast<RegisterText>(&NamespaceNode::RegisterNamespaceNode),
                 &NamespaceNode::ResolveNode, &NamespaceNode::SubNamespace,
                 &NamespaceNode::GetDispatcher, &NamespaceNode::SetParent,
                 &NamespaceNode::GetParent);
}

TEST(SlotOrderTest, NamespaceNodeKeepsItsOrder) {
  std::vector<std::ptrdiff_t> slots = SlotsOfNode();
  slots.push_back(SlotOf(&Extended<Namespace>::End));  // the class Namespace adds none
  EXPECT_THAT(slots, FollowTheDestructor());
}

TEST(SlotOrderTest, CommandSpecKeepsItsOrder) {
  using Register = void (CommandSpec::*)(NodePtr, std::string);
  using RegisterCharacters = void (CommandSpec::*)(NodePtr, const char*);
  EXPECT_THAT(
      SlotsOf(&CommandSpec::GetInputSpec, &CommandSpec::GetOutputSpec, &CommandSpec::GetThis,
              &CommandSpec::HasNamespaceNode, &CommandSpec::GetNamespaceNode,
              static_cast<Register>(&CommandSpec::RegisterNamespaceNode),
              static_cast<RegisterCharacters>(&CommandSpec::RegisterNamespaceNode),
              &CommandSpec::ResolveNode, &CommandSpec::GetDispatcher, &CommandSpec::SetParent,
              &CommandSpec::GetParent, &CommandSpec::GetType, &CommandSpec::GetInputSpecInternal,
              &CommandSpec::GetOutputSpecInternal, &Extended<CommandSpec>::End),
      FollowTheDestructor());
}

TEST(SlotOrderTest, CommandAddsItsOperationsAfterThoseOfCommandSpec) {
  EXPECT_EQ(SlotOf(&Command::GetOutputSpecInternal), 15);
  EXPECT_EQ(SlotOf(&Command::Execute), 16);
  EXPECT_EQ(SlotOf(&Command::ExecuteInternal), 17);
  EXPECT_EQ(SlotOf(&Extended<Command>::End), 18);
}

TEST(SlotOrderTest, CallTargetKeepsItsOrder) {
  EXPECT_THAT(SlotsOf(&CallTarget::Execute, &Extended<CallTarget>::End), FollowTheDestructor());
}

TEST(SlotOrderTest, CallTargetSpecKeepsItsOrder) {
  EXPECT_THAT(SlotsOf(&CallTargetSpec::GetInputSpec, &CallTargetSpec::GetOutputSpec,
                      &Extended<CallTargetSpec>::End),
              FollowTheDestructor());
}

TEST(SlotOrderTest, PluginKeepsItsOrder) {
  EXPECT_THAT(SlotsOf(&Plugin::Initialize, &Plugin::GetName, &Plugin::RegisterNamespaces,
                      &Plugin::HasFormatter, &Plugin::GetFormatter, &Plugin::GetFormatters,
                      &Extended<Plugin>::End),
              FollowTheDestructor());
}

TEST(SlotOrderTest, FormatterKeepsItsOrder) {
  EXPECT_THAT(SlotsOf(&Formatter::Format, &Extended<Formatter>::End), FollowTheDestructor());
}

}  // namespace
}  // namespace Kestrel

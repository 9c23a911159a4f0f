// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "support/Golden.h"

// The declarations of the commands in each area. Scripts depend on them.
namespace Kestrel::Testing {
namespace {

using AutoCli::Command;
using AutoCli::NamespaceNode;
using CallSpec::ParameterSpec;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

std::string TypeName(CallSpec::ParameterType type) {
  static const char* const names[] = {"string",      "integer",      "boolean",     "flag",
                                      "string list", "integer list", "boolean list"};
  return names[type];
}

std::string Describe(const ParameterSpec& parameter) {
  std::string text = "  -" + parameter.GetShortName() + " --" + parameter.GetName() + " " +
                     TypeName(parameter.GetType());
  text += parameter.IsRequired() ? ", required" : "";
  text += parameter.IsSecret() ? ", secret" : "";
  text += parameter.GetConstraint() == nullptr ? "" : ", " + parameter.GetConstraint()->ToString();
  return text + "\n";
}

// Returns the type of a value, followed by the fields of its structures.
std::string Describe(const std::shared_ptr<MetaObject>& value, const std::string& indent) {
  if (const auto list = std::dynamic_pointer_cast<MetaList>(value)) {
    const auto structure = list->GetListStructure();
    return structure == nullptr ? "list of " + MetaTypeString(list->GetListType()) + "\n"
                                : "list of " + Describe(structure, indent);
  }
  const auto structure = std::dynamic_pointer_cast<MetaStruct>(value);
  if (structure == nullptr) {
    return MetaTypeString(value->GetType()) + "\n";
  }
  std::string text = structure->GetTypeName() + "\n";
  for (const std::string& field : structure->GetFieldNames()) {
    text += indent + field + ": " + Describe(structure->GetField(field), indent + "  ");
  }
  return text;
}

std::string Describe(const std::string& path, Command& command) {
  std::string text = path + "\n";
  for (const auto& parameter : command.GetInputSpec()->GetParameters()) {
    text += Describe(*parameter);
  }
  const auto format = command.GetDefaultOutputFormatParameters();
  text += "  result: " + Describe(command.GetOutputSpec()->GetRootObject(), "    ");
  text += "  format: " + format.GetFormatter() + "\n";
  for (const auto& [name, value] : std::map<std::string, std::string>(
           format.GetParameters().begin(), format.GetParameters().end())) {
    text += "    " + name + "=" + value + "\n";
  }
  return text + "\n";
}

std::string DescribeBelow(const std::shared_ptr<NamespaceNode>& node) {
  std::string text;
  for (const auto& child : node->GetNamespaceNodes()) {
    const auto command = std::dynamic_pointer_cast<Command>(child);
    text +=
        command == nullptr ? DescribeBelow(child) : Describe(child->GetPathString(' '), *command);
  }
  return text;
}

class HostDeclarationTest : public ::testing::TestWithParam<const char*> {};

// Returns the root of a tree whose commands have not been called yet, because a call can change the
// default columns of some commands. The dispatcher is never destroyed, as in GetDispatcher.
std::shared_ptr<NamespaceNode> GetRoot() {
  static AutoCli::Dispatcher* dispatcher = nullptr;
  if (dispatcher == nullptr) {
    dispatcher = new AutoCli::Dispatcher();
    dispatcher->AddPlugin(KESTREL_HOST_PLUGIN);
  }
  return dispatcher->GetRootNamespace();
}

TEST_P(HostDeclarationTest, MatchesTheRecordedDeclaration) {
  const auto area = GetRoot()->GetNamespaceNode(GetParam());
  ASSERT_NE(area, nullptr);
  EXPECT_THAT(DescribeBelow(area), MatchesGolden(std::string("host/declared-") + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Areas, HostDeclarationTest,
                         ::testing::Values("log", "network", "package", "service", "storage",
                                           "system"),
                         [](const auto& area) { return std::string(area.param); });

#ifdef KESTREL_HOST_HAS_ALL_COMMANDS
INSTANTIATE_TEST_SUITE_P(AreasThatNeedLibraries, HostDeclarationTest, ::testing::Values("file"),
                         [](const auto& area) { return std::string(area.param); });
#endif

}  // namespace
}  // namespace Kestrel::Testing

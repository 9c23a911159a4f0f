// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/testing/CommandRun.h"
#include "kestrel/testing/GoogleTest.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostTool.h"
#include "support/StreamCapture.h"

// Properties of the commands of the plug-in.
namespace Kestrel::Testing {
namespace {

using AutoCli::Command;
using AutoCli::NamespaceNode;
using AutoCli::NodeType;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

void VisitNodes(const std::shared_ptr<NamespaceNode>& node,
                const std::function<void(const std::shared_ptr<NamespaceNode>&)>& visit) {
  for (const auto& child : node->GetNamespaceNodes()) {
    visit(child);
    VisitNodes(child, visit);
  }
}

// The parameters that lists of structures share. Only lists with sizes have "human".
const std::set<std::string> kCommonParameters = {"sort", "descending", "limit", "human"};

const std::vector<std::string> kAreas = {"system",  "storage", "network", "log",
                                         "package", "service", "file"};

// Maps the paths of all nodes in these areas, with spaces between their words, to the nodes.
std::map<std::string, std::shared_ptr<NamespaceNode>> GetNodes() {
  std::map<std::string, std::shared_ptr<NamespaceNode>> nodes;
  const auto root = GetDispatcher().GetRootNamespace();
  for (const std::string& area : kAreas) {
    if (const auto node = root->GetNamespaceNode(area)) {
      nodes[area] = node;
      VisitNodes(node, [&nodes](const auto& child) { nodes[child->GetPathString(' ')] = child; });
    }
  }
  return nodes;
}

std::map<std::string, std::shared_ptr<Command>> GetCommands() {
  std::map<std::string, std::shared_ptr<Command>> commands;
  for (const auto& [path, node] : GetNodes()) {
    if (node->GetType() == NodeType::Command) {
      commands[path] = std::dynamic_pointer_cast<Command>(node);
    }
  }
  return commands;
}

// Adds the structures in a declared result to `shapes`, by type name.
void CollectShapes(const std::shared_ptr<MetaObject>& object,
                   std::map<std::string, std::shared_ptr<MetaStruct>>& shapes) {
  if (const auto structure = std::dynamic_pointer_cast<MetaStruct>(object)) {
    shapes[structure->GetTypeName()] = structure;
    for (const std::string& field : structure->GetFieldNames()) {
      CollectShapes(structure->GetField(field), shapes);
    }
  } else if (const auto list = std::dynamic_pointer_cast<MetaList>(object)) {
    CollectShapes(list->GetListStructure(), shapes);
  }
}

std::map<std::string, std::shared_ptr<MetaStruct>> GetShapes(Command& command) {
  std::map<std::string, std::shared_ptr<MetaStruct>> shapes;
  CollectShapes(command.GetOutputSpec()->GetRootObject(), shapes);
  return shapes;
}

// Returns the structure of one row of a command that lists structures, or null for another command.
std::shared_ptr<MetaStruct> GetRow(Command& command) {
  const auto list = std::dynamic_pointer_cast<MetaList>(command.GetOutputSpec()->GetRootObject());
  return list == nullptr ? nullptr : list->GetListStructure();
}

// Splits a key such as "fields:Type" or "units:Type.Field" into the type name and the field. The
// field may be empty.
std::pair<std::string, std::string> SplitKey(const std::string& key) {
  const std::string qualifier = key.substr(key.find(':') + 1);
  const std::size_t point = qualifier.find('.');
  return {qualifier.substr(0, point),
          point == std::string::npos ? "" : qualifier.substr(point + 1)};
}

// Returns a command line for a command without required parameters. "log list" reads a file,
// because the host may have no journal.
Words LineFor(const std::string& path) {
  return SplitShellWords(path == "log list" ? "log list --file=/etc/passwd" : path);
}

// Returns whether this user may read the data that the command lists.
bool CanAnswer(const std::string& path) {
  const auto mayReadKernelLog = [] {
    const int log = ::open("/dev/kmsg", O_RDONLY | O_CLOEXEC);
    return log >= 0 && ::close(log) == 0;
  };
  const auto mayReadCrontabs = [] {
    return ::access("/var/spool/cron/crontabs", R_OK) == 0 || errno == ENOENT;
  };
  return (path != "log kernel list" || mayReadKernelLog()) &&
         (path != "system crontab list" || mayReadCrontabs());
}

TEST(HostPluginTest, EveryNodeIsDescribed) {
  const auto nodes = GetNodes();
  EXPECT_EQ(nodes.count("system process list"), 1u);
  for (const auto& [path, node] : nodes) {
    EXPECT_THAT(node->GetDescription(), Not(IsEmpty())) << path;
    EXPECT_EQ(node->GetDescription().back(), '.') << path;
  }
}

TEST(HostPluginTest, EveryResultAndEveryFieldIsDocumented) {
  for (const auto& [path, command] : GetCommands()) {
    EXPECT_NE(command->GetOutputSpec()->GetDescription(), "Documentation missing") << path;
    for (const auto& [type, shape] : GetShapes(*command)) {
      for (const std::string& field : shape->GetFieldNames()) {
        EXPECT_NE(shape->GetFieldDocumentation(field), "Documentation missing")
            << path << ": " << type << "." << field;
      }
    }
  }
}

TEST(HostPluginTest, EveryParameterIsDescribedAndOnlyCommonOnesLackAShortName) {
  for (const auto& [path, command] : GetCommands()) {
    for (const auto& parameter : command->GetInputSpec()->GetParameters()) {
      const std::string text = parameter->GetDescription(true);
      EXPECT_THAT(text, Not(IsEmpty())) << path << " --" << parameter->GetName();
      EXPECT_THAT(text, Not(HasSubstr("%"))) << path << " --" << parameter->GetName();
      // The parameters that lists share have no short names.
      const bool isCommon = kCommonParameters.count(parameter->GetName()) == 1;
      EXPECT_EQ(parameter->GetShortName().size(), isCommon ? 0u : 1u)
          << path << " --" << parameter->GetName();
    }
  }
}

TEST(HostPluginTest, DefaultFormatsNameExistingFields) {
  for (const auto& [path, command] : GetCommands()) {
    const auto format = command->GetDefaultOutputFormatParameters();
    EXPECT_TRUE(GetDispatcher().HasFormatter(format.GetFormatter())) << path;
    const auto shapes = GetShapes(*command);
    for (const auto& [key, value] : format.GetParameters()) {
      if (key == "fields") {
        const auto row = GetRow(*command);
        ASSERT_NE(row, nullptr) << path;
        for (const std::string& name : format.GetParameterAsList(key)) {
          EXPECT_TRUE(row->HasField(name)) << path << ": " << name;
        }
        continue;
      }
      if (key.find(':') == std::string::npos) {
        EXPECT_TRUE(key == "wrap-last" || key == "align-fields" || key == "show-header") << key;
        continue;
      }
      const auto [type, field] = SplitKey(key);
      ASSERT_EQ(shapes.count(type), 1u) << path << ": " << key;
      EXPECT_TRUE(field.empty() || shapes.at(type)->HasField(field)) << path << ": " << key;
      if (key.rfind("fields:", 0) == 0) {
        for (const std::string& name : format.GetParameterAsList(key)) {
          EXPECT_TRUE(shapes.at(type)->HasField(name)) << path << ": " << name;
        }
      }
    }
  }
}

TEST(HostPluginTest, EveryExampleIsAValidCall) {
  std::string typed;
  for (const auto& [path, command] : GetCommands()) {
    EXPECT_THAT(command->GetExamples(), Not(IsEmpty())) << path;
    for (const auto& [arguments, description] : command->GetExamples()) {
      EXPECT_THAT(description, Not(IsEmpty())) << path;
      typed += "secret\n";
    }
  }
  const ScopedInput secrets(typed);
  const StreamCapture prompt(STDOUT_FILENO);
  EXPECT_TRUE(Passes(CheckExamples(GetTool())));
}

// The first command accepts only names of modules; the second one accepts any string.
TEST(HostPluginTest, TreatsHostileValuesAsData) {
  EXPECT_TRUE(Passes(RunHostileValues(GetTool(), "system module check")));
  EXPECT_TRUE(Passes(RunHostileValues(GetTool(), "system session list")));
}

TEST(HostPluginTest, EveryCommandHasAHelpPage) {
  for (const auto& [path, command] : GetCommands()) {
    const CommandResult help = Call(path, {{"help", ""}});
    ASSERT_THAT(help.GetErrors(), IsEmpty()) << path;
    EXPECT_EQ(help.output->GetOutputType(), CallSpec::Output::Help) << path;
    AutoCli::FormatParameters format;
    format.SetFormatter("commandhelp");
    AutoCli::DisplayContext display;
    display.width = 80;
    std::ostringstream page;
    EXPECT_TRUE(GetDispatcher().FormatOutput(help.output, format, display, page)) << path;
    EXPECT_THAT(page.str(), StartsWith("Usage: vexil " + path + " <options>\n")) << path;
    EXPECT_THAT(page.str(), HasSubstr("# vexil " + path)) << path;
    for (const auto& parameter : command->GetInputSpec()->GetParameters()) {
      EXPECT_THAT(page.str(), HasSubstr("--" + parameter->GetName())) << path;
    }
  }
}

TEST(HostPluginTest, EveryCommandThatNeedsNoParameterAnswersInItsDeclaredShape) {
  std::size_t called = 0;
  for (const auto& [path, command] : GetCommands()) {
    const auto& parameters = command->GetInputSpec()->GetParameters();
    const bool isReady = std::none_of(parameters.begin(), parameters.end(),
                                      [](const auto& spec) { return spec->IsRequired(); });
    if (isReady && !Changes(*command) && CanAnswer(path)) {
      const CommandRun run = GetTool().Run(LineFor(path));
      EXPECT_TRUE(Passes(CheckShape(run))) << path;
      EXPECT_NE(run.Result(), nullptr) << path;
      ++called;
    }
  }
  EXPECT_GE(called, 11u);
}

TEST(HostPluginTest, ReportsAMissingInput) {
  const auto output = CallSpec::Output::New();
  GetCommands().at("system uptime get")->Execute(nullptr, output);
  EXPECT_THAT(output->GetErrors(),
              ::testing::ElementsAre("Error on command get : The command needs an input"));
}

TEST(HostPluginTest, HeadersOfTablesFitAScreenOf80Columns) {
  for (const auto& [path, command] : GetCommands()) {
    const auto& parameters = command->GetInputSpec()->GetParameters();
    const bool isReady = std::none_of(parameters.begin(), parameters.end(),
                                      [](const auto& spec) { return spec->IsRequired(); });
    if (isReady && !Changes(*command) && CanAnswer(path) &&
        command->GetDefaultOutputFormatParameters().GetFormatter() == "table") {
      const std::string text = Printed(GetTool().Run(LineFor(path)), "", {}, 80);
      EXPECT_LE(text.find('\n'), 80u) << path;
    }
  }
}

TEST(HostPluginTest, CommandsUseAllKindsOfParametersConstraintsAndResults) {
  std::set<int> types;
  std::set<int> constraints;
  std::set<MetaType> results;
  std::set<MetaType> elements;
  bool hasSecret = false;
  bool hasFullEnumeration = false;
  for (const auto& [path, command] : GetCommands()) {
    for (const auto& parameter : command->GetInputSpec()->GetParameters()) {
      types.insert(parameter->GetType());
      hasSecret |= parameter->IsSecret();
      hasFullEnumeration |=
          parameter->GetDescription(false).find("%FULLENUM%") != std::string::npos;
      if (parameter->GetConstraint() != nullptr) {
        constraints.insert(parameter->GetConstraint()->GetType());
      }
    }
    const auto root = command->GetOutputSpec()->GetRootObject();
    results.insert(root->GetType());
    if (const auto list = std::dynamic_pointer_cast<MetaList>(root)) {
      elements.insert(list->GetListType());
    }
  }
  EXPECT_EQ(types, (std::set<int>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(constraints, (std::set<int>{1, 2, 3, 4}));
  EXPECT_EQ(results, (std::set<MetaType>{MetaType::Int, MetaType::Bool, MetaType::String,
                                         MetaType::Struct, MetaType::List}));
  EXPECT_EQ(elements, (std::set<MetaType>{MetaType::String, MetaType::Struct}));
  EXPECT_TRUE(hasSecret);
  EXPECT_TRUE(hasFullEnumeration);
}

}  // namespace
}  // namespace Kestrel::Testing

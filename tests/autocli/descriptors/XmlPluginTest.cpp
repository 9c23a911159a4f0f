// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlPlugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/DescribeValue.h"
#include "support/SampleCommands.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using testing::ThrowsMessage;

using CallSpec::InputSpec;
using CallSpec::ParameterConstraintType;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaString;
using Testing::DescribeValue;
using Testing::ScopedTempDir;
using Testing::StreamCapture;

/// Returns a descriptor whose root element contains the version and `content`.
std::string Extension(const std::string& content) {
  return "<?xml version='1.0'?>\n<extension><version>1.0.0</version>" + content + "</extension>\n";
}

std::string NamespaceElement(const std::string& path, const std::string& description) {
  return "<namespace path='" + path + "'><description>" + description +
         "</description></namespace>";
}

/// The parts of a `command` element.
struct CommandParts {
  std::string inputSpec = "<input-spec/>";
  std::string outputSpec = "<output-spec><string/></output-spec>";
  std::string formatParameters = "<format-parameters/>";
  std::string execute = "<execute>echo</execute>";
  std::string more = "<description>Shows it.</description>";

  std::string At(const std::string& path) const {
    return "<command path='" + path + "'>" + more + inputSpec + outputSpec + formatParameters +
           execute + "</command>";
  }
};

std::string Commands(const std::string& commands) {
  return Extension("<commands>" + commands + "</commands>");
}

/// A file with the descriptor `text`.
class DescriptorFile {
 public:
  explicit DescriptorFile(std::string_view text) : path_(folder_.Write("test.xml", text)) {}

  const std::string& GetPath() const { return path_; }

  std::shared_ptr<XmlPlugin> Load() const {
    const auto plugin = XmlPlugin::New(path_);
    plugin->Initialize();
    return plugin;
  }

  /// Registers the plug-in in a new tree.
  std::shared_ptr<RootNamespace> MakeTree() const {
    const auto root = RootNamespace::New(nullptr);
    Load()->RegisterNamespaces(root);
    return root;
  }

  /// Returns the message that Initialize throws, without the beginning that all messages have.
  /// Returns an empty string if nothing is thrown.
  std::string GetFault() const {
    try {
      Load();
    } catch (const KestrelException& error) {
      const std::string message = error.what();
      const std::string prefix =
          "Unable to handle XML Plugin " + path_ + ".  There was an error while parsing: ";
      EXPECT_THAT(message, StartsWith(prefix));
      return message.substr(prefix.size());
    }
    return std::string();
  }

 private:
  ScopedTempDir folder_;
  std::string path_;
};

std::string FaultOf(const std::string& text) { return DescriptorFile(text).GetFault(); }

/// Returns the fault of a command, without the beginning that all messages have.
std::string CommandFaultOf(const CommandParts& parts) {
  const std::string fault = FaultOf(Commands(parts.At("disk.get")));
  const std::string prefix = "Unable to register the command 'vexil disk.get'  Error was ";
  EXPECT_THAT(fault, StartsWith(prefix));
  return fault.substr(std::min(prefix.size(), fault.size()));
}

std::string InputFaultOf(const std::string& content) {
  CommandParts parts;
  parts.inputSpec = "<input-spec>" + content + "</input-spec>";
  return CommandFaultOf(parts);
}

std::shared_ptr<ExtensionCommand> CommandOf(const CommandParts& parts) {
  const auto root = DescriptorFile(Commands(parts.At("get"))).MakeTree()->GetNamespaceNode("get");
  return std::dynamic_pointer_cast<ExtensionCommand>(root);
}

std::shared_ptr<InputSpec> InputOf(const std::string& content) {
  CommandParts parts;
  parts.inputSpec = "<input-spec>" + content + "</input-spec>";
  return CommandOf(parts)->GetInputSpecInternal();
}

TEST(XmlPluginTest, ItsNameIsItsPath) {
  EXPECT_EQ(XmlPlugin::New("/no/such/file.xml")->GetName(), "/no/such/file.xml");
}

TEST(XmlPluginTest, HasNoFormatters) {
  const auto plugin = XmlPlugin::New("x.xml");
  EXPECT_FALSE(plugin->HasFormatter("table"));
  EXPECT_THAT(plugin->GetFormatters(), IsEmpty());
  EXPECT_THAT([&] { plugin->GetFormatter("table"); },
              ThrowsMessage<KestrelException>("Xml Plugin doesn't not support formatters"));
}

TEST(XmlPluginTest, BeforeInitializeItRegistersNothing) {
  const auto root = RootNamespace::New(nullptr);
  XmlPlugin::New("x.xml")->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNodeNames(), IsEmpty());
}

TEST(XmlPluginTest, RegistersNamespacesAndCommands) {
  CommandParts parts;
  parts.inputSpec =
      "<input-spec><parameter name='device' type='string' required='true'><description>Which."
      "</description></parameter></input-spec>";
  parts.execute = "<execute>show '$val{device}'</execute><stdin>$val{device}!</stdin>";
  const auto root =
      DescriptorFile(Extension("<namespaces>" + NamespaceElement("disk", "Disks.") +
                               NamespaceElement("disk.local", "Local disks.") + "</namespaces>" +
                               "<commands>" + parts.At("disk.local.get") + parts.At("top") +
                               "</commands>"))
          .MakeTree();
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("disk", "top"));
  EXPECT_EQ(root->GetNamespaceNode("disk")->GetDescription(), "Disks.");
  std::list<std::string> path{"disk", "local", "get"};
  const auto command = std::dynamic_pointer_cast<ExtensionCommand>(root->ResolveNode(path));
  ASSERT_NE(command, nullptr);
  EXPECT_EQ(command->GetPathString(' '), "disk local get");
  EXPECT_EQ(command->GetDescription(), "Shows it.");
  const auto input = CallSpec::Input::New();
  input->SetInputSpec(command->GetInputSpecInternal());
  input->AddParameter("device", "a'b");
  EXPECT_EQ(command->SubstituteInput(input, false), "show 'ab'");
  EXPECT_EQ(command->SubstituteInput(input, true), "a'b!");
}

TEST(XmlPluginTest, AcceptsAnyRootElementAndIgnoresUnknownElements) {
  EXPECT_EQ(FaultOf("<x><!-- c --><other/><version>1.0.0</version><commands> <note/> </commands>"
                    "</x>"),
            "");
}

TEST(XmlPluginTest, AcceptsNamespacesWithoutCommands) {
  const auto root = DescriptorFile(Extension("<namespaces>" + NamespaceElement("disk", "Disks.") +
                                             "<other/></namespaces>"))
                        .MakeTree();
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("disk"));
}

TEST(XmlPluginTest, RefusesAFileThatCannotBeParsed) {
  const StreamCapture diagnostics(STDERR_FILENO);
  const ScopedTempDir folder;
  const auto fault = [](const std::string& path) {
    try {
      XmlPlugin::New(path)->Initialize();
    } catch (const KestrelException& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  const auto expected = [](const std::string& path) {
    return "Unable to handle XML Plugin " + path +
           ".  There was an error while parsing: Unable to parse XML descriptor: " + path;
  };
  const std::string missing = folder.GetPath("missing.xml");
  const std::string empty = folder.Write("empty.xml", "");
  const std::string truncated = folder.Write("truncated.xml", "<extension><version>1.0.0");
  const std::string directory = folder.MakeDirectory("directory.xml");
  const std::string fifo = folder.GetPath("fifo.xml");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path : {missing, empty, truncated, directory, fifo}) {
    EXPECT_EQ(fault(path), expected(path));
  }
}

/// Changes the real and the effective user of this process during the lifetime of the object, if
/// the process has the rights of root.
class OtherUsers {
 public:
  OtherUsers(uid_t real, uid_t effective) : isRoot_(geteuid() == 0) {
    if (isRoot_) {
      EXPECT_EQ(setresuid(real, effective, 0), 0);
    }
  }
  OtherUsers(const OtherUsers&) = delete;
  OtherUsers& operator=(const OtherUsers&) = delete;
  ~OtherUsers() {
    if (isRoot_) {
      EXPECT_EQ(setresuid(0, 0, 0), 0);
    }
  }

 private:
  const bool isRoot_;
};

std::string DiagnosticsOf(const std::string& path) {
  StreamCapture diagnostics(STDERR_FILENO);
  EXPECT_THROW(XmlPlugin::New(path)->Initialize(), KestrelException);
  return diagnostics.GetText();
}

TEST(XmlPluginTest, ReportsThatAFileCannotBeOpened) {
  constexpr uid_t kUser = 4711;
  const ScopedTempDir folder;
  const std::string missing = folder.GetPath("missing.xml");
  const std::string secret = folder.Write("secret.xml", "<x/>");
  ASSERT_EQ(chmod(folder.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(chmod(secret.c_str(), 0), 0);
  const auto expected = [](const std::string& path) {
    return "I/O warning : failed to load external entity \"" + path + "\"\n";
  };
  EXPECT_EQ(DiagnosticsOf(missing), expected(missing));
  {
    const OtherUsers isChecked(kUser, 0);
    EXPECT_EQ(DiagnosticsOf(missing), expected(missing));
  }
  const OtherUsers mayNotRead(kUser, kUser);
  EXPECT_THAT(DiagnosticsOf(secret), EndsWith(expected(secret)));
}

TEST(XmlPluginTest, RefusesAnyOtherVersion) {
  const std::string message = "Unknown vexil extention version.  Valid versions are: '1.0.0'";
  EXPECT_EQ(FaultOf("<x><version>1.0</version><commands/></x>"), message);
  EXPECT_EQ(FaultOf("<x><version> 1.0.0</version><commands/></x>"), message);
  EXPECT_EQ(FaultOf("<x version='1.0.0'><commands/></x>"), message);
  EXPECT_EQ(FaultOf("<x/>"), message);
  EXPECT_EQ(FaultOf("<x><version>1.0.0</version><version>1.0.0</version></x>"),
            "Illegal Duplicate tags found.  The tag version was expected only once, but was found "
            "multiple times.");
}

TEST(XmlPluginTest, RefusesADescriptorWithoutNamespacesOrCommands) {
  const DescriptorFile file(Extension(""));
  EXPECT_EQ(file.GetFault(),
            "Unable to find any namespaces or commands to register for plugin " + file.GetPath());
}

TEST(XmlPluginTest, RefusesASecondListOfNamespacesOrCommands) {
  EXPECT_EQ(FaultOf(Extension("<namespaces/><namespaces/>")),
            "More than one instance of namespaces found, expected only one.");
  EXPECT_EQ(FaultOf(Extension("<commands/><commands/>")),
            "More than one instance of commands found, expected only one.");
}

TEST(XmlPluginTest, RefusesANamespaceWithoutPathOrDescription) {
  const std::string message =
      "Unable to register a namespace without valid 'path' attribute or <description> being "
      "present.";
  for (const char* element :
       {"<namespace><description>D</description></namespace>",
        "<namespace path=''><description>D</description></namespace>", "<namespace path='disk'/>",
        "<namespace path='disk'><description/></namespace>", "<namespace/>"}) {
    EXPECT_EQ(FaultOf(Extension(std::string("<namespaces>") + element + "</namespaces>")), message);
  }
  EXPECT_EQ(FaultOf(Extension("<namespaces><namespace><description>D</description><description>E"
                              "</description></namespace></namespaces>")),
            "Illegal Duplicate tags found.  The tag description was expected only once, but was "
            "found multiple times.");
}

TEST(XmlPluginTest, RefusesACommandWithoutPath) {
  const std::string message =
      "Invalid command specification found.  <command> tags must have a non-empty 'path' "
      "attribute";
  EXPECT_EQ(FaultOf(Commands("<command/>")), message);
  EXPECT_EQ(FaultOf(Commands(CommandParts().At(""))), message);
}

TEST(XmlPluginTest, RefusesACommandWithoutARequiredPart) {
  const auto missing = [](std::string CommandParts::*part) {
    CommandParts parts;
    parts.*part = "";
    return CommandFaultOf(parts);
  };
  EXPECT_EQ(missing(&CommandParts::inputSpec),
            "Unable to find <input-spec> element, which is required for a command.");
  EXPECT_EQ(missing(&CommandParts::outputSpec),
            "Unable to find <output-spec> element, which is required for a command.");
  EXPECT_EQ(missing(&CommandParts::formatParameters),
            "Unable to find <format-parameters> element, which is required for a command.");
  EXPECT_EQ(missing(&CommandParts::execute),
            "Missing or empty <execute> tag.  This tag must specify a valid execution string for "
            "this command.");
}

TEST(XmlPluginTest, RefusesADuplicatePart) {
  const auto doubled = [](std::string CommandParts::*part, const std::string& second) {
    CommandParts parts;
    parts.*part += second;
    return CommandFaultOf(parts);
  };
  for (const char* name : {"meta-data", "input-spec", "output-spec", "format-parameters"}) {
    const std::string element = "<" + std::string(name) + "/>";
    const std::string again = std::string(name) == "meta-data" ? element : "";
    EXPECT_EQ(doubled(&CommandParts::more, element + again),
              "More than one instance of " + std::string(name) + " found, expected only one.");
  }
  for (const char* name : {"description", "execute", "stdin"}) {
    const std::string element = "<" + std::string(name) + ">a</" + std::string(name) + ">";
    EXPECT_EQ(doubled(&CommandParts::more, element + element),
              "Illegal Duplicate tags found.  The tag " + std::string(name) +
                  " was expected only once, but was found multiple times.");
  }
}

TEST(XmlPluginTest, ChecksTheVersionFirst) {
  EXPECT_EQ(FaultOf("<x><version>2</version><namespaces/><namespaces/></x>"),
            "Unknown vexil extention version.  Valid versions are: '1.0.0'");
}

TEST(XmlPluginTest, ReadsNamespacesBeforeCommands) {
  EXPECT_EQ(FaultOf(Extension("<commands/><commands/><namespaces><namespace/></namespaces>")),
            "Unable to register a namespace without valid 'path' attribute or <description> being "
            "present.");
}

// In each command, one part and all parts after it have faults. The first of these parts is
// reported.
TEST(XmlPluginTest, ChecksThePartsOfACommandInAFixedOrder) {
  const auto duplicate = [](const std::string& tag) {
    return "Illegal Duplicate tags found.  The tag " + tag +
           " was expected only once, but was found multiple times.";
  };
  CommandParts parts;
  parts.more =
      "<description>a</description><description>b</description><meta-data><x/></meta-data>"
      "<stdin>a</stdin><stdin>b</stdin>";
  parts.inputSpec = parts.outputSpec = parts.formatParameters = parts.execute = "";
  EXPECT_EQ(CommandFaultOf(parts), duplicate("description"));
  parts.more = "<meta-data><x/></meta-data><stdin>a</stdin><stdin>b</stdin>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Found unexpected tag while building meta-data set.  Unexpected tag was: x");
  parts.more = "<stdin>a</stdin><stdin>b</stdin>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Unable to find <input-spec> element, which is required for a command.");
  parts.inputSpec = "<input-spec/>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Unable to find <output-spec> element, which is required for a command.");
  parts.outputSpec = "<output-spec/>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Unable to find <format-parameters> element, which is required for a command.");
  parts.formatParameters = "<format-parameters/>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Missing or empty <execute> tag.  This tag must specify a valid execution string for "
            "this command.");
  parts.execute = "<execute>x</execute>";
  EXPECT_EQ(CommandFaultOf(parts), duplicate("stdin"));
}

TEST(XmlPluginTest, MetaDataIsAddedToTheCommand) {
  CommandParts parts;
  parts.more =
      "<meta-data> <!-- c --><![CDATA[x]]><meta-data-entry name='b'>1</meta-data-entry>"
      "<meta-data-entry name='a'/><meta-data-entry name='b'>2</meta-data-entry></meta-data>";
  EXPECT_THAT(CommandOf(parts)->GetMetaData(), ElementsAre(Pair("a", ""), Pair("b", "2")));
}

TEST(XmlPluginTest, RefusesInvalidMetaData) {
  CommandParts parts;
  parts.more = "<meta-data><meta-data-entry>1</meta-data-entry></meta-data>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Error parsing 'meta-data-entry', missing required attribute 'name'");
  parts.more = "<meta-data><entry name='a'>1</entry></meta-data>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Found unexpected tag while building meta-data set.  Unexpected tag was: entry");
}

TEST(XmlPluginTest, FormatParametersAreTheDefaultsOfTheCommand) {
  CommandParts parts;
  parts.formatParameters =
      "<format-parameters><format-parameter name='fields:Disk'>Name</format-parameter>"
      "<other/><formatter>table</formatter><format-parameter name='fields:Disk'>Name,Size"
      "</format-parameter><format-parameter name='show-header'/></format-parameters>";
  const auto command = CommandOf(parts);
  const FormatParameters defaults = command->GetDefaultOutputFormatParameters();
  EXPECT_EQ(defaults.GetFormatter(), "table");
  EXPECT_EQ(defaults.GetParameter("fields:Disk"), "Name,Size");
  EXPECT_TRUE(defaults.HasParameter("show-header"));
}

TEST(XmlPluginTest, RefusesASecondFormatter) {
  CommandParts parts;
  parts.formatParameters =
      "<format-parameters><formatter/><formatter>table</formatter></format-parameters>";
  EXPECT_EQ(CommandFaultOf(parts), "Invalid plugin format.  Duplicate <formatter> tags found");
}

std::string ParameterElement(const std::string& attributes,
                             const std::string& content = "<description>D</description>") {
  return "<parameter " + attributes + ">" + content + "</parameter>";
}

std::string OptionalParameter(const std::string& type, const std::string& content) {
  return ParameterElement("name='pp' required='false' type='" + type + "'",
                          "<description>D</description>" + content);
}

TEST(XmlPluginTest, ReadsEveryTypeOfParameter) {
  struct Row {
    const char* word;
    ParameterType type;
  };
  for (const Row& row :
       {Row{"string", ParameterType::String}, Row{"string-list", ParameterType::StringList},
        Row{"bool", ParameterType::Bool}, Row{"bool-list", ParameterType::BoolList},
        Row{"int", ParameterType::Int}, Row{"int-list", ParameterType::IntList},
        Row{"flag", ParameterType::Flag}}) {
    const auto spec = InputOf(OptionalParameter(row.word, ""));
    ASSERT_EQ(spec->GetParameters().size(), 1u);
    EXPECT_EQ(spec->GetParameters()[0]->GetType(), row.type) << row.word;
  }
}

TEST(XmlPluginTest, ReadsEverythingInAParameter) {
  const auto spec =
      InputOf(ParameterElement("name='one' type='string' required='false' secret='true' "
                               "shortname='o'",
                               "<description>Tell me.</description>") +
              "<other/>" + ParameterElement("name='two' type='int' required='true' secret=''"));
  ASSERT_EQ(spec->GetParameters().size(), 2u);
  const ParameterSpec& one = *spec->GetParameters()[0];
  EXPECT_EQ(one.GetName(), "one");
  EXPECT_EQ(one.GetShortName(), "o");
  EXPECT_EQ(one.GetDescription(false), "Tell me.");
  EXPECT_FALSE(one.IsRequired());
  EXPECT_TRUE(one.IsSecret());
  EXPECT_EQ(one.GetConstraint(), nullptr);
  const ParameterSpec& two = *spec->GetParameters()[1];
  EXPECT_EQ(two.GetShortName(), "");
  EXPECT_TRUE(two.IsRequired());
  EXPECT_FALSE(two.IsSecret());
}

TEST(XmlPluginTest, ContextSupportedIsUsedUnchanged) {
  const auto spec = InputOf("<context-supported> user</context-supported>");
  EXPECT_TRUE(spec->IsContextSupported(" user"));
  EXPECT_FALSE(spec->IsContextSupported("user"));
}

TEST(XmlPluginTest, RefusesAnInvalidParameter) {
  const std::string invalidType =
      ". Missing or invalid required attribute: 'type'.  Must be one of [string, string-list, "
      "bool, bool-list, int, int-list]";
  EXPECT_EQ(InputFaultOf(ParameterElement("type='int' required='true'")),
            "Unable to parse Input Parameter.  Missing required attribute: 'name'");
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' required='true'")),
            "Unable to parse Input Parameter pp" + invalidType);
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' type='integer' required='true'")),
            "Unable to parse Input Parameter pp" + invalidType);
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' type='int'")),
            "Unable to parse Input Paramter pp. Missing or invalid 'required', must be one of "
            "['true', 'false']");
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' type='int' required='True'")),
            "Unable to parse Input Paramter pp. Missing or invalid 'required', must be one of "
            "['true', 'false']");
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' type='int' required='true'", "")),
            "Unable to parse Input Paramter pp. Missing command description");
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' type='int' required='true' secret='yes'")),
            "Unable to parse Input Paramter pp. Invalid 'secret', must be one of ['true', "
            "'false']");
  EXPECT_EQ(InputFaultOf(ParameterElement("name='pp' type='int' required='true' secret='true'")),
            "Unable to parse Input Paramter pp. Invalid type int for secret, must be 'string'");
}

// As in the test for commands, each parameter also has faults that come later in the order.
TEST(XmlPluginTest, ChecksAParameterInAFixedOrder) {
  EXPECT_EQ(InputFaultOf("<parameter type='x' required='x' secret='x'/>"),
            "Unable to parse Input Parameter.  Missing required attribute: 'name'");
  EXPECT_THAT(InputFaultOf("<parameter name='!' type='x' required='x' secret='x'/>"),
              StartsWith("Unable to parse Input Parameter !. Missing or invalid required"));
  EXPECT_THAT(InputFaultOf("<parameter name='!' type='int' required='x' secret='x'/>"),
              StartsWith("Unable to parse Input Paramter !. Missing or invalid 'required'"));
  EXPECT_EQ(InputFaultOf("<parameter name='!' type='int' required='true' secret='x'/>"),
            "Unable to parse Input Paramter !. Missing command description");
  EXPECT_THAT(InputFaultOf(ParameterElement("name='!' type='int' required='true' secret='x'")),
              StartsWith("Unable to parse Input Paramter !. Invalid 'secret'"));
  EXPECT_THAT(InputFaultOf(ParameterElement("name='!' type='int' required='true' secret='true'")),
              StartsWith("Unable to parse Input Paramter !. Invalid type int for secret"));
  EXPECT_EQ(InputFaultOf(ParameterElement("name='!' type='int' required='true'",
                                          "<description>D</description><constraint/>")),
            "Invalid Parameter name '!' parameter names can only contain lower-case alphanumeric "
            "characters, numbers and '-'");
}

TEST(XmlPluginTest, ReportsWhatTheSpecificationsRefuse) {
  const std::string parameter = ParameterElement("name='pp' type='int' required='true'");
  EXPECT_EQ(InputFaultOf(parameter + parameter),
            "Found a duplicate paramater specification for parameter named 'pp'");
  EXPECT_EQ(InputFaultOf(ParameterElement("name='p' type='int' required='true'")),
            "Parameter name must be at least 2 characters");
  EXPECT_THAT(InputFaultOf(OptionalParameter(
                  "int", "<constraint type='regex'><regex>a</regex></constraint>")),
              StartsWith("Invalid constraint specified for parameter pp.  The parameter"));
}

std::string ConstraintFaultOf(const std::string& constraint) {
  const std::string fault = InputFaultOf(OptionalParameter("string", constraint));
  const std::string prefix = "Unable to build parameter constraint for parameter pp.  Error was: ";
  EXPECT_THAT(fault, StartsWith(prefix));
  return fault.substr(std::min(prefix.size(), fault.size()));
}

TEST(XmlPluginTest, ReadsEveryKindOfConstraint) {
  const auto constraintOf = [](const std::string& type, const std::string& constraint) {
    return InputOf(OptionalParameter(type, constraint))->GetParameters()[0]->GetConstraint();
  };
  const auto strings = constraintOf(
      "string",
      "<constraint type='stringenum'> <enum> <!-- c --><![CDATA[x]]><enum-value value='b'/>"
      "<enum-value value='a'/> </enum></constraint>");
  EXPECT_EQ(strings->GetType(), ParameterConstraintType::StringEnum);
  EXPECT_THAT(strings->GetStringEnum(), ElementsAre("b", "a"));
  const auto numbers = constraintOf("int",
                                    "<constraint type='intenum'><enum><enum-value value=' 7x'/>"
                                    "<enum-value value='-1'/></enum></constraint>");
  EXPECT_EQ(numbers->GetType(), ParameterConstraintType::IntEnum);
  EXPECT_THAT(numbers->GetIntEnum(), ElementsAre(7, -1));
  const auto regex =
      constraintOf("string", "<constraint type='regex'><regex>a|b</regex></constraint>");
  EXPECT_EQ(regex->GetType(), ParameterConstraintType::StringRegex);
  EXPECT_EQ(regex->GetStringRegex(), "a|b");
  const auto range =
      constraintOf("int", "<constraint type='range'><range min='-5' max='10'/></constraint>");
  EXPECT_EQ(range->GetType(), ParameterConstraintType::IntRange);
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  range->GetIntRange(minimum, maximum);
  EXPECT_EQ(minimum, -5);
  EXPECT_EQ(maximum, 10);
}

constexpr const char* kNoData =
    "Error parsing parameter constraint.  There was no data included inside the <constraint> "
    "tag for the given constraint type";
constexpr const char* kBadRange =
    "Error parsing 'range' parameter constraint.  Range requires both 'min' and 'max' "
    "attributes and that both are integers.";

struct BrokenConstraint {
  const char* constraint;
  const char* fault;
};

constexpr BrokenConstraint kBrokenConstraints[] = {
    {"<constraint/>",
     "Missing or invalid constraint 'type', must be one of [stringenum, intenum, regex, "
     "range] got ''"},
    {"<constraint type='enum'><enum/></constraint>",
     "Missing or invalid constraint 'type', must be one of [stringenum, intenum, regex, "
     "range] got 'enum'"},
    {"<constraint type='stringenum'/>", kNoData},
    {"<constraint type='intenum'><range/></constraint>", kNoData},
    {"<constraint type='regex'><enum/></constraint>", kNoData},
    {"<constraint type='range'><regex/></constraint>", kNoData},
    {"<constraint type='regex'><regex/></constraint>",
     "Error parsing regex from parameter constraint.Missing or empty 'regex' tag"},
    {"<constraint type='stringenum'><enum/><enum/></constraint>",
     "More than one instance of enum found, expected only one."},
    {"<constraint type='stringenum'><enum><enum-value/></enum></constraint>",
     "Error parsing 'enum-value', missing required attribute 'value'"},
    {"<constraint type='intenum'><enum><value/></enum></constraint>",
     "Found unexpected tag while building an enum.  Unexpected tag was: value"},
    {"<constraint type='intenum'><enum><enum-value value='x1'/></enum></constraint>",
     "Error parsing integer enumeration. Expected integer, but got x1"},
    {"<constraint type='intenum'><enum><enum-value value='1'/><enum-value value='01'/>"
     "</enum></constraint>",
     "Duplicate Value found in ParameterConstraint::AddIntEnum"},
    {"<constraint type='stringenum'><enum><enum-value value='a'/><enum-value value='a'/>"
     "</enum></constraint>",
     "Duplicate Value found in ParameterConstraint::AddStringEnum: a"},
    {"<constraint type='range'><range min='a' max='1'/></constraint>", kBadRange},
    {"<constraint type='range'><range min='1' max='b'/></constraint>", kBadRange},
    {"<constraint type='range'><range min='1'/></constraint>", kBadRange},
    {"<constraint type='range'><range max='1'/></constraint>", kBadRange},
};

TEST(XmlPluginTest, RefusesABrokenConstraint) {
  for (const BrokenConstraint& broken : kBrokenConstraints) {
    EXPECT_EQ(ConstraintFaultOf(broken.constraint), broken.fault) << broken.constraint;
  }
}

TEST(XmlPluginTest, ARangeWithItsBoundsSwappedIsAFaultOfTheConstraint) {
  EXPECT_EQ(ConstraintFaultOf("<constraint type='range'><range min='2' max='1'/></constraint>"),
            "Invalid values for SetIntRange, constraints must have a min value <= max value");
}

TEST(XmlPluginTest, ASecondConstraintIsRefused) {
  EXPECT_EQ(InputFaultOf(OptionalParameter("string", "<constraint/><constraint/>")),
            "More than one instance of constraint found, expected only one.");
}

TEST(XmlPluginTest, AnOutputSpecDeclaresOneValueOrNone) {
  CommandParts parts;
  parts.outputSpec =
      "<output-spec> <!-- c --><![CDATA[x]]><list type='structure'><structure typeName='Disk'>"
      "<field name='Name'><string/></field></structure></list> </output-spec>";
  EXPECT_EQ(DescribeValue(CommandOf(parts)->GetOutputSpecInternal()->GetRootObject()),
            "list of Struct [structure Disk {Name: string ''}]");
  parts.outputSpec = "<output-spec/>";
  EXPECT_EQ(CommandOf(parts)->GetOutputSpecInternal()->GetRootObject(), nullptr);
}

TEST(XmlPluginTest, RefusesAnInvalidOutputSpec) {
  CommandParts parts;
  parts.outputSpec = "<output-spec><integer/></output-spec>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Unable to build output spec.  Error was Unable to make a MetaObject from a node with "
            "tag 'integer'");
  parts.outputSpec = "<output-spec><int/>text<integer/></output-spec>";
  EXPECT_EQ(CommandFaultOf(parts),
            "Found more than one node under 'output-spec', where only one node is supported.  The "
            "tag was integer");
}

TEST(XmlPluginTest, SplitsPathsAtFullStops) {
  EXPECT_THAT(XmlPlugin::SplitPath("a.b.c"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(XmlPlugin::SplitPath("abc"), ElementsAre("abc"));
  EXPECT_THAT(XmlPlugin::SplitPath(""), IsEmpty());
  EXPECT_THAT(XmlPlugin::SplitPath("."), ElementsAre(""));
  EXPECT_THAT(XmlPlugin::SplitPath(".a"), ElementsAre("", "a"));
  EXPECT_THAT(XmlPlugin::SplitPath("a..b."), ElementsAre("a", "", "b"));
}

/// Registers what the descriptor `text` declares. Returns the message if that fails, otherwise an
/// empty string.
std::string RegistrationFault(const std::string& text, const std::shared_ptr<Namespace>& root) {
  const DescriptorFile file(text);
  const auto plugin = file.Load();
  try {
    plugin->RegisterNamespaces(root);
  } catch (const KestrelException& error) {
    return error.what();
  }
  return std::string();
}

std::string OneNamespace(const std::string& path, const std::string& description) {
  return Extension("<namespaces>" + NamespaceElement(path, description) + "</namespaces>");
}

/// Makes a tree with the namespace "disk", whose description is "Disks.", and the command "disk
/// list".
std::shared_ptr<RootNamespace> MakeTakenTree() {
  const auto root = RootNamespace::New(nullptr);
  Testing::RegisterAt(root, {"disk", "list"}, Testing::MakeAnsweringCommand(""));
  root->GetNamespaceNode("disk")->SetDescription("Disks.");
  return root;
}

TEST(XmlPluginTest, SharesATopLevelNamespaceWithTheSameDescription) {
  const auto root = MakeTakenTree();
  const auto disk = root->GetNamespaceNode("disk");
  EXPECT_EQ(RegistrationFault(
                Extension("<namespaces>" + NamespaceElement("disk", "Disks.") + "</namespaces>" +
                          "<commands>" + CommandParts().At("disk.get") + "</commands>"),
                root),
            "");
  EXPECT_EQ(root->GetNamespaceNode("disk"), disk);
  EXPECT_THAT(disk->GetNamespaceNodeNames(), ElementsAre("get", "list"));
}

TEST(XmlPluginTest, RefusesATakenPathBeforeAnythingIsInserted) {
  const auto root = MakeTakenTree();
  const std::string fresh = NamespaceElement("fresh", "F.");
  EXPECT_EQ(RegistrationFault(Extension("<namespaces>" + fresh +
                                        NamespaceElement("disk", "Other.") + "</namespaces>"),
                              root),
            "Duplicate top-level namespaces must have the same description: disk");
  EXPECT_EQ(RegistrationFault(Commands(CommandParts().At("disk")), root),
            "Vexil path is already registered: disk");
  EXPECT_EQ(RegistrationFault(Extension("<namespaces>" + fresh + "</namespaces><commands>" +
                                        CommandParts().At("disk.list") + "</commands>"),
                              root),
            "Vexil path is already registered: disk.list");
  EXPECT_EQ(RegistrationFault(OneNamespace("disk.list", "Disks."), root),
            "Vexil path is already registered: disk.list");
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("disk"));
}

TEST(XmlPluginTest, RefusesADeeperNamespaceEvenWithTheSameDescription) {
  const auto root = RootNamespace::New(nullptr);
  const std::string text = Extension("<namespaces>" + NamespaceElement("disk", "D.") +
                                     NamespaceElement("disk.local", "L.") + "</namespaces>");
  EXPECT_EQ(RegistrationFault(text, root), "");
  EXPECT_EQ(RegistrationFault(text, root), "Vexil path is already registered: disk.local");
}

TEST(XmlPluginTest, RefusesANamespaceAtThePathOfACommand) {
  const auto root = RootNamespace::New(nullptr);
  Testing::RegisterAt(root, {"disk"}, Testing::MakeAnsweringCommand(""));
  EXPECT_EQ(RegistrationFault(OneNamespace("disk", "D."), root),
            "Vexil path is already registered: disk");
}

TEST(XmlPluginTest, DoesNotMakeParents) {
  const auto root = RootNamespace::New(nullptr);
  EXPECT_EQ(RegistrationFault(Extension("<namespaces>" + NamespaceElement("disk", "D.") +
                                        NamespaceElement("net.local", "L.") + "</namespaces>"),
                              root),
            "Unable to find a command or namespace with the name 'net' in namespace ");
  // The node that was inserted before the failure stays.
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("disk"));
}

TEST(XmlPluginTest, ChecksForTakenPathsBeforeItLooksForParents) {
  const auto root = MakeTakenTree();
  EXPECT_EQ(RegistrationFault(Extension("<namespaces>" + NamespaceElement("net.local", "L.") +
                                        NamespaceElement("disk", "Other.") + "</namespaces>"),
                              root),
            "Duplicate top-level namespaces must have the same description: disk");
}

TEST(XmlPluginTest, ReportsATakenNamespaceBeforeATakenCommand) {
  const auto root = MakeTakenTree();
  EXPECT_EQ(RegistrationFault(Extension("<commands>" + CommandParts().At("disk.list") +
                                        "</commands><namespaces>" +
                                        NamespaceElement("disk", "Other.") + "</namespaces>"),
                              root),
            "Duplicate top-level namespaces must have the same description: disk");
}

TEST(XmlPluginTest, KeepsWhatWasReadBeforeAFault) {
  const DescriptorFile file(Extension("<namespaces>" + NamespaceElement("disk", "D.") +
                                      "</namespaces><commands>" + CommandParts().At("disk.get") +
                                      "<command/></commands>"));
  const auto plugin = XmlPlugin::New(file.GetPath());
  EXPECT_THROW(plugin->Initialize(), KestrelException);
  const auto root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNode("disk")->GetNamespaceNodeNames(), ElementsAre("get"));
}

TEST(XmlPluginTest, ReportsAnInvalidNameWhenItRegisters) {
  const auto root = RootNamespace::New(nullptr);
  EXPECT_EQ(RegistrationFault(OneNamespace("Disk", "D."), root),
            "Invalid name for namespace 'Disk', must be a name consisting of letters and numbers "
            "and must conform to 'camel' casing.");
  EXPECT_THAT(RegistrationFault(OneNamespace(".", "D."), root), StartsWith("Invalid name for"));
}

TEST(XmlPluginTest, TheTreeRefusesADuplicateWithinOneDescriptor) {
  const auto root = RootNamespace::New(nullptr);
  EXPECT_EQ(RegistrationFault(Commands(CommandParts().At("get") + CommandParts().At("get")), root),
            "Duplicate registration in namespace  attempt to register two objects with name get");
}

TEST(XmlPluginTest, ASubcommandOfACommandIsRefused) {
  const auto root = RootNamespace::New(nullptr);
  const std::string fault =
      RegistrationFault(Commands(CommandParts().At("get") + CommandParts().At("get.more")), root);
  EXPECT_THAT(fault, StartsWith("Unable to find a namespace or command with the name 'more'"));
}

TEST(XmlPluginTest, AddsNamespacesAndCommandsFromACallersNodes) {
  const std::string text = "<x><namespaces>" + NamespaceElement("disk", "D.") + "</namespaces>" +
                           "<commands>" + CommandParts().At("disk.get") + "</commands></x>";
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "test", nullptr, 0), &xmlFreeDoc);
  const xmlNode* namespaces = xmlDocGetRootElement(document.get())->children;
  const auto plugin = XmlPlugin::New("x");
  plugin->AddNamespaces(namespaces);
  plugin->AddCommands(namespaces->next);
  const auto root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNode("disk")->GetNamespaceNodeNames(), ElementsAre("get"));
}

TEST(XmlPluginTest, TheDispatcherSkipsABrokenDescriptor) {
  const ScopedTempDir folder;
  const std::string broken = folder.Write("a.xml", "<x><version>1.0</version></x>");
  folder.Write("b.xml", OneNamespace("disk", "Disks."));
  StreamCapture error(STDERR_FILENO);
  Dispatcher dispatcher;
  dispatcher.AddExternalDirectory(folder.GetPath());
  EXPECT_EQ(error.GetText(), "Error loading plugin " + broken +
                                 " skipping.  Error was: Unable to handle XML "
                                 "Plugin " +
                                 broken +
                                 ".  There was an error while parsing: Unknown vexil extention "
                                 "version.  Valid versions are: '1.0.0'\n");
  EXPECT_THAT(dispatcher.GetRootNamespace()->GetNamespaceNodeNames(), testing::Contains("disk"));
}

}  // namespace
}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CliDispatcher.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <list>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/LimitedBuffer.h"
#include "support/PseudoTerminal.h"
#include "support/SampleCommands.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {

namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using Kestrel::Testing::LimitedBuffer;
using Kestrel::Testing::MakeAnsweringCommand;
using Kestrel::Testing::MakeThrowingCommand;
using Kestrel::Testing::PseudoTerminal;
using Kestrel::Testing::RegisterAt;
using Kestrel::Testing::SampleCommand;
using Kestrel::Testing::ScopedInput;
using Kestrel::Testing::ScopedTempDir;
using Kestrel::Testing::StreamCapture;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::ThrowsMessage;

using Tokens = std::vector<std::string>;

const char* const kUsage =
    "tool [dispatcher options] <namespaces> <command> [options]\n"
    "      For a list of available namespaces run tool with no arguments.  \n"
    "      Objects can be listed by specifying just the namespace.\n"
    "      Commands can be listed by specifying the namespace and object.\n"
    "\n"
    " Dispatcher Options: \n"
    "       --plugin-dir                    Add all the plug-ins from this directory\n"
    "       --plugin                        Add a specific file plugin.  (Multiple --plugin "
    "options "
    "can be passed.)\n"
    "       --formatter <formatter>         Override the formatter to use for a given command\n"
    "       --format-param <key>=<value>    Set a formatter parameter to give the formatter "
    "information about how to format the command\n"
    "       --screen-width <width>          Use the specified screen width when formatting text\n"
    "    -h|--help                          Show this message.\n"
    "\n"
    "\n";

const char* const kRootListing =
    "Usage: tool [disp options] <namespaces> <command>\n"
    "\n"
    "For help please run tool --help\n"
    "\n"
    "Available Namespaces: \n"
    "\n"
    "try    \n"
    "vexil  Commands that operate on the vexil system itself allowing users to get additional "
    "information.\n"
    "\n"
    "Available Commands: \n"
    "\n"
    "\n";

// Prints its arguments, so that a test sees what a formatter receives.
class ShowingFormatter : public Formatter {
 public:
  ShowingFormatter() : Formatter("showing") {}

  void Format(const std::shared_ptr<Output>& output, FormatParameters& parameters,
              DisplayContext& display, std::ostream& out) override {
    out << "root " << (output->GetRootObject() == nullptr ? "none" : "some") << "\n"
        << "size " << display.width << " x " << display.height << "\n";
    for (const auto& [key, value] : parameters.GetParameters()) {
      out << key << " is " << value << "\n";
    }
    if (parameters.HasParameter("throw")) {
      throw KestrelException("the formatter is out of ink");
    }
    if (parameters.HasParameter("complain")) {
      output->AddErrorMessage("the formatter complains");
    }
  }
};

class ShowingPlugin : public Plugin {
 public:
  void Initialize() override {}
  const std::string& GetName() const override { return name_; }
  void RegisterNamespaces(std::shared_ptr<Namespace>) override {}
  bool HasFormatter(const std::string& name) override { return name == "showing"; }
  std::shared_ptr<Formatter> GetFormatter(const std::string&) override { return formatters_[0]; }
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override { return formatters_; }

 private:
  std::string name_ = "Showing";
  std::vector<std::shared_ptr<Formatter>> formatters_ = {std::make_shared<ShowingFormatter>()};
};

struct Handled {
  bool result = false;
  std::string out;
  std::string err;
};

class CliDispatcherTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dispatcher.RegisterPlugin(std::make_shared<ShowingPlugin>());
    command->SetDefaultOutputFormatter("simple");
    RegisterAt(dispatcher.GetRootNamespace(), {"try", "say"}, command);
    // The width is a setting of the whole process, so a width set by an earlier test would still
    // apply.
    Apply({"--screen-width=0"});
  }

  // Declares a string "name" (-n), a flag "force" (-f) and a secret "password", all optional.
  void DeclareParameters() {
    auto spec = InputSpec::New();
    const auto name = ParameterSpec::New("name", ParameterType::String);
    name->SetShortName("n");
    const auto force = ParameterSpec::New("force", ParameterType::Flag);
    force->SetShortName("f");
    const auto password = ParameterSpec::New("password", ParameterType::String);
    password->SetSecret(true);
    for (const auto& parameter : {name, force, password}) {
      parameter->SetRequired(false);
      spec->AddParameter(parameter);
    }
    command->inputSpec = spec;
  }

  OptionParser Parse(Tokens tokens) {
    OptionParser parser("tool");
    parser.ParseVector(std::move(tokens));
    return parser;
  }

  Handled HandleParser(OptionParser parser) {
    StreamCapture out(STDOUT_FILENO);
    StreamCapture err(STDERR_FILENO);
    Handled handled;
    handled.result = dispatcher.HandleOptions(parser, true);
    handled.out = out.GetText();
    handled.err = err.GetText();
    return handled;
  }

  Handled Handle(Tokens tokens) { return HandleParser(Parse(std::move(tokens))); }

  Handled HandleStream(const std::string& text) {
    std::istringstream in(text);
    StreamCapture out(STDOUT_FILENO);
    StreamCapture err(STDERR_FILENO);
    Handled handled;
    handled.result = dispatcher.ParseStreamInput(in);
    handled.out = out.GetText();
    handled.err = err.GetText();
    return handled;
  }

  // Applies only the dispatcher options and returns the error messages.
  Tokens Apply(Tokens tokens) {
    OptionParser parser = Parse(std::move(tokens));
    const auto output = CommandOutput::New();
    EXPECT_TRUE(dispatcher.HandleDispatcherOptions(parser, params, output));
    return output->GetErrors();
  }

  // Returns the structure that describes the children of `node`.
  std::shared_ptr<MetaStruct> List(const std::shared_ptr<NamespaceNode>& node) {
    const auto output = CommandOutput::New();
    const StreamCapture out(STDOUT_FILENO);
    dispatcher.PrintChildren(node, output);
    return std::dynamic_pointer_cast<MetaStruct>(output->GetRootObject());
  }

  CliDispatcher dispatcher;
  FormatParameters params;
  std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("done");
};

using CliDispatcherDeathTest = CliDispatcherTest;

// Ending the process.

TEST_F(CliDispatcherDeathTest, HandleArgvInputExitsWithZeroWhenTheCommandRan) {
  const char* const argv[] = {"tool", "try", "say"};
  StreamCapture out(STDOUT_FILENO);
  EXPECT_EXIT(dispatcher.HandleArgvInput(3, argv), ExitedWithCode(0), "^$");
  EXPECT_EQ("done\n", out.GetText());
}

TEST_F(CliDispatcherDeathTest, HandleArgvInputExitsWithOneOnAnError) {
  const char* const argv[] = {"tool", "--formatter", "nosuch", "try", "say"};
  StreamCapture out(STDOUT_FILENO);
  EXPECT_EXIT(dispatcher.HandleArgvInput(5, argv), ExitedWithCode(1),
              "^Errors: \nUnable to find requested formatter: nosuch\n$");
  EXPECT_EQ("", out.GetText());
}

TEST_F(CliDispatcherDeathTest, HandleArgvInputReadsInputAndExitsWithTheStatusOfItsLastLine) {
  const ScopedTempDir folder;
  const std::string good = folder.Write("good", "try\ntry say\n");
  const std::string bad = folder.Write("bad", "try say\n--formatter=nosuch try say\n");
  const char* const argv[] = {"tool", "--input", good.c_str()};
  EXPECT_EXIT(dispatcher.HandleArgvInput(3, argv), ExitedWithCode(0), "^$");
  const char* const failing[] = {"tool", "--input", bad.c_str()};
  EXPECT_EXIT(dispatcher.HandleArgvInput(3, failing), ExitedWithCode(1),
              "^Errors: \nUnable to find requested formatter: nosuch\n$");
}

TEST_F(CliDispatcherDeathTest, HandleArgvInputWithoutWordsListsTheRootAndExitsWithOne) {
  const char* const argv[] = {"tool"};
  StreamCapture out(STDOUT_FILENO);
  EXPECT_EXIT(dispatcher.HandleArgvInput(1, argv), ExitedWithCode(1), "^$");
  EXPECT_EQ(kRootListing, out.GetText());
}

TEST_F(CliDispatcherDeathTest, WithoutArgumentsTheToolIsCalledVexil) {
  StreamCapture out(STDOUT_FILENO);
  EXPECT_EXIT(dispatcher.HandleArgvInput(0, nullptr), ExitedWithCode(1), "^$");
  EXPECT_EQ("Usage: vexil [disp options]", out.GetText().substr(0, 27));
}

TEST_F(CliDispatcherDeathTest, HelpPrintsTheUsageAndExitsWithOne) {
  for (const char* option : {"--help", "-h"}) {
    const char* const argv[] = {"tool", option};
    StreamCapture out(STDOUT_FILENO);
    EXPECT_EXIT(dispatcher.HandleArgvInput(2, argv), ExitedWithCode(1), "^$");
    EXPECT_EQ(kUsage, out.GetText()) << option;
  }
}

TEST_F(CliDispatcherDeathTest, HelpEndsAStreamAndLeavesErrorsUnprinted) {
  StreamCapture out(STDOUT_FILENO);
  std::istringstream in("try say\n--colour --help\ntry say\n");
  EXPECT_EXIT(dispatcher.ParseStreamInput(in), ExitedWithCode(1), "^$");
  EXPECT_EQ("done\nvexil [dispatcher options]", out.GetText().substr(0, 31));
}

TEST_F(CliDispatcherDeathTest, HelpComesBeforeAnyPluginIsLoaded) {
  const char* const argv[] = {"tool", "--plugin-dir=/nosuch", "--plugin=/nosuch.so", "--help"};
  StreamCapture out(STDOUT_FILENO);
  EXPECT_EXIT(dispatcher.HandleArgvInput(4, argv), ExitedWithCode(1), "^$");
  EXPECT_EQ(kUsage, out.GetText());
}

TEST_F(CliDispatcherTest, AnUnknownWordMakesEachOperationThrow) {
  const char* const argv[] = {"tool", "nosuch"};
  const auto unknown = ThrowsMessage<KestrelException>(
      "Unable to find a command or namespace with the name 'nosuch' in namespace ");
  EXPECT_THAT([&] { Handle({"nosuch"}); }, unknown);
  EXPECT_THAT([&] { dispatcher.HandleArgvInput(2, argv); }, unknown);
  EXPECT_THAT([&] { HandleStream("nosuch\ntry say\n"); }, unknown);
  EXPECT_EQ(0, command->executions);
}

TEST_F(CliDispatcherTest, AWordAfterACommandMakesHandleOptionsThrow) {
  EXPECT_THAT(
      [&] {
        Handle({"try", "say", "extra"});
      },
      ThrowsMessage<KestrelException>(
          "Unable to find a namespace or command with the name 'extra' on the command 'try "
          "say'. Commands cannot have sub-commands or sub-namespaces."));
  EXPECT_EQ(0, command->executions);
}

// A command and its parameters.

TEST_F(CliDispatcherTest, RunsACommandWithItsParameters) {
  DeclareParameters();
  std::string seen;
  command->work = [&seen](const auto& input, const auto& output) {
    const auto& call = dynamic_cast<const CommandInput&>(*input);
    seen = call.GetDispatcher() + "|" + call.GetCommandPathString() + "|" +
           input->GetParameter("name") + "|" + (input->IsFlagSet("force") ? "force" : "");
    output->SetRootObject(MetaString::New("ran"));
  };
  const Handled handled = Handle({"try", "say", "-n", "x", "--force"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("ran\n", handled.out);
  EXPECT_EQ("", handled.err);
  EXPECT_EQ("tool|try say|x|force", seen);
}

TEST_F(CliDispatcherTest, PrintsTheMistakesInTheParametersAndRunsNothing) {
  DeclareParameters();
  const Handled handled =
      Handle({"try", "say", "--name", "--force", "yes", "--name=x", "--other=1"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ("Errors: \n--name must have value\n", handled.err);
  const Handled later = Handle({"try", "say", "--force", "yes", "--name=x", "--name=y", "--aa=1"});
  EXPECT_FALSE(later.result);
  EXPECT_EQ(
      "Errors: \n"
      "Unknown parameter : aa\n"
      "Invalid data 'yes' for parameter force.  This parameter is a flag and cannot accept any "
      "values. \n"
      "Found multiple values for name this parameter can only accept a single value.\n",
      later.err);
  EXPECT_EQ(0, command->executions);
}

TEST_F(CliDispatcherTest, ExtraWordsAfterTheParametersAreAnError) {
  DeclareParameters();
  const Handled handled = Handle({"try", "say", "--name", "x", "y"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("Errors: \nFound Extra non-parameter arguments at the end of input: 'y' \n",
            handled.err);
  EXPECT_EQ(0, command->executions);
}

TEST_F(CliDispatcherTest, PromptsForASecretBeforeTheCommandRuns) {
  DeclareParameters();
  command->work = [](const auto& input, const auto& output) {
    output->SetRootObject(MetaString::New(input->GetParameter("password")));
  };
  const ScopedInput in("open sesame\n");
  const Handled handled = Handle({"try", "say", "--password"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("Enter value for 'password': \nopen sesame\n", handled.out);
}

TEST_F(CliDispatcherTest, PrintsTheErrorsOfACommandThatFails) {
  command->work = [](const auto&, const auto&) { throw std::runtime_error("no fuel"); };
  const Handled handled = Handle({"try", "say"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ("Errors: \nError on command try say : no fuel\n", handled.err);
}

TEST_F(CliDispatcherTest, TheFormatterIsNotCalledAfterACommandFails) {
  command->work = [](const auto&, const auto& output) { output->AddErrorMessage("no fuel"); };
  const Handled handled = Handle({"--formatter=nosuch", "try", "say"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("Errors: \nno fuel\n", handled.err);
}

TEST_F(CliDispatcherTest, PrintsTheHelpPageOfACommandDespiteAnUnknownParameter) {
  command->SetDescription("Says something.");
  const Handled handled = Handle({"try", "say", "--other=1", "--help"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("Usage: tool try say <options>\n\nDescription: Says something.\n\n",
            handled.out.substr(0, 61));
  EXPECT_EQ("", handled.err);
  EXPECT_EQ(0, command->executions);
}

TEST_F(CliDispatcherTest, TheUsersFormatterTakesPrecedenceOverThatOfHelpPages) {
  const Handled handled = Handle({"--formatter", "showing", "try", "say", "--help"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("root some\nsize 0 x 0\n", handled.out);
}

TEST_F(CliDispatcherTest, AnOutputOfAnUnknownTypeIsPrintedOnlyByARequestedFormatter) {
  command->SetDefaultOutputFormatter("simple");
  command->work = [](const auto&, const auto& output) {
    output->SetRootObject(MetaString::New("ran"));
    output->SetOutputType(static_cast<Output::OutputType>(1));
  };
  EXPECT_EQ("", Handle({"try", "say"}).out);
  EXPECT_EQ("ran\n", Handle({"--formatter=simple", "try", "say"}).out);
}

TEST_F(CliDispatcherTest, TheUsersChoicesOverrideTheCommandsDefaults) {
  command->SetDefaultOutputFormatter("showing");
  command->SetDefaultOutputParameter("aa", "default");
  command->SetDefaultOutputParameter("bb", "default");
  const Handled handled =
      Handle({"--format-param=bb=user", "--format-param", "cc=user", "try", "say"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("root some\nsize 0 x 0\naa is default\nbb is user\ncc is user\n", handled.out);
}

TEST_F(CliDispatcherTest, AnExceptionOfTheFormatterIsAnErrorOfTheCall) {
  const Handled handled = Handle({"--formatter=showing", "--format-param=throw=1", "try", "say"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("root some\nsize 0 x 0\nthrow is 1\n", handled.out);
  EXPECT_EQ("Errors: \nthe formatter is out of ink\n", handled.err);
}

TEST_F(CliDispatcherTest, AnErrorThatTheFormatterAddsIsPrinted) {
  const Handled handled =
      Handle({"--formatter=showing", "--format-param=complain=1", "try", "say"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("Errors: \nthe formatter complains\n", handled.err);
}

TEST_F(CliDispatcherTest, AUserCannotChooseTheFormatterOfListings) {
  const Handled handled = Handle({"--formatter", "clihelp", "try", "say"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("Errors: \nUnable to find requested formatter: clihelp\n", handled.err);
  EXPECT_EQ(1, command->executions);
}

// A node that has the type of a command but is not a Command, so that it cannot run.
class BareCommand : public CommandSpec {
 public:
  std::shared_ptr<InputSpec> GetInputSpecInternal() override { return InputSpec::New(); }
  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override { return OutputSpec::New(); }
};

TEST_F(CliDispatcherTest, ACommandThatCannotRunSucceedsSilently) {
  RegisterAt(dispatcher.GetRootNamespace(), {"try", "bare"}, std::make_shared<BareCommand>());
  const Handled handled = Handle({"try", "bare"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ("", handled.err);
}

// A plug-in's own class of nodes, with whatever type a test sets.
class OddNode : public NamespaceNode {
 public:
  explicit OddNode(NodeType type) : type_(type) {}
  std::shared_ptr<NamespaceNode> GetThis() override { return shared_from_this(); }
  NodeType GetType() override { return type_; }
  std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override {
    return path.empty() ? GetThis() : nullptr;
  }
  Dispatcher* GetDispatcher() override { return nullptr; }
  void SetParent(std::shared_ptr<NamespaceNode> parent) override { parent_ = parent; }
  std::shared_ptr<NamespaceNode> GetParent() override { return parent_.lock(); }

 private:
  NodeType type_;
  std::weak_ptr<NamespaceNode> parent_;
};

// A plug-in's own namespace, which counts the calls of ResolveNode.
class CountingNamespace : public Namespace {
 public:
  std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override {
    ++resolutions;
    return Namespace::ResolveNode(path);
  }

  int resolutions = 0;
};

TEST_F(CliDispatcherTest, ACommandLineIsResolvedOnce) {
  const auto counting = std::make_shared<CountingNamespace>();
  dispatcher.GetRootNamespace()->RegisterNamespaceNode(counting, "counting");
  counting->RegisterNamespaceNode(command, "say");
  EXPECT_EQ("done\n", Handle({"counting", "say"}).out);
  EXPECT_EQ(1, counting->resolutions);
}

// Listing children.

TEST_F(CliDispatcherTest, WithoutWordsTheRootIsListed) {
  const Handled handled = Handle(Tokens{});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ(kRootListing, handled.out);
  EXPECT_EQ("", handled.err);
}

TEST_F(CliDispatcherTest, ANamespaceIsListed) {
  dispatcher.GetRootNamespace()->GetNamespaceNode("try")->SubNamespace("deeper");
  command->SetDescription("Says something.");
  const Handled handled = Handle({"try"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ(
      "Usage: tool [disp options] try <namespaces> <command>\n"
      "\n"
      "For help please run tool --help\n"
      "\n"
      "Available Namespaces: \n"
      "\n"
      "deeper  \n"
      "\n"
      "Available Commands: \n"
      "\n"
      "say   Says something.\n"
      "\n",
      handled.out);
}

TEST_F(CliDispatcherTest, ANamespaceIsListedWhateverParametersFollowIt) {
  const Handled plain = Handle({"try"});
  for (const Tokens& tokens : {Tokens{"try", "--help"}, Tokens{"try", "-h"},
                               Tokens{"try", "--name", "x", "y"}, Tokens{"try", "--password"}}) {
    const Handled handled = Handle(tokens);
    EXPECT_FALSE(handled.result);
    EXPECT_EQ(plain.out, handled.out);
    EXPECT_EQ("", handled.err);
  }
}

TEST_F(CliDispatcherTest, ErrorsOfTheOptionsAreNotPrintedWithAListing) {
  for (const Tokens& tokens :
       {Tokens{"--colour"}, Tokens{"--formatter"}, Tokens{"--format-param"}}) {
    const Handled handled = Handle(tokens);
    EXPECT_FALSE(handled.result);
    EXPECT_EQ(kRootListing, handled.out);
    EXPECT_EQ("", handled.err);
  }
}

TEST_F(CliDispatcherTest, PrintChildrenLeavesTheListingAsTheRootObject) {
  const auto root = dispatcher.GetRootNamespace();
  root->RegisterNamespaceNode(std::make_shared<OddNode>(static_cast<NodeType>(3)), "odd");
  root->GetNamespaceNode("odd")->SetDescription("Odd indeed.");
  command->SetDescription("Says something.");
  Handle({"try", "say"});
  EXPECT_EQ(
      "{'Dispatcher' => 'tool', 'NamespaceNodes' => '{'Description' => 'Says something.', 'Name' "
      "=> "
      "'say', 'Type' => 'Command', }', 'Path' => 'try', }",
      List(root->GetNamespaceNode("try"))->ToString());
  const auto listing = List(root);
  EXPECT_EQ("VexilCommandPrint", listing->GetTypeName());
  EXPECT_EQ("", listing->GetField("Path")->ToString());
  EXPECT_EQ(
      "{'Description' => 'Odd indeed.', 'Name' => 'odd', 'Type' => 'Unknown', }, "
      "{'Description' => '', 'Name' => 'try', 'Type' => 'Namespace', }, "
      "{'Description' => 'Commands that operate on the vexil system itself allowing users to get "
      "additional information.', 'Name' => 'vexil', 'Type' => 'Namespace', }",
      listing->GetField("NamespaceNodes")->ToString());
}

TEST_F(CliDispatcherTest, TheListingIsWrappedToTheScreenWidth) {
  const Handled handled = Handle({"--screen-width=60"});
  EXPECT_EQ(
      "vexil  Commands that operate on the vexil system itself \n"
      "       allowing users to get additional information.\n",
      handled.out.substr(handled.out.find("vexil "), 110));
}

TEST_F(CliDispatcherTest, ANodeThatResolvesToNullListsTheRootOnlyForHelp) {
  dispatcher.GetRootNamespace()->RegisterNamespaceNode(
      std::make_shared<OddNode>(NodeType::Namespace), "odd");
  const Handled silent = Handle({"odd", "nosuch", "--name", "x"});
  EXPECT_FALSE(silent.result);
  EXPECT_EQ("", silent.out);
  EXPECT_EQ("", silent.err);
  for (const char* option : {"--help", "-h"}) {
    const Handled listed = Handle({"odd", "nosuch", option});
    EXPECT_FALSE(listed.result);
    EXPECT_EQ("Usage: tool [disp options] <namespaces> <command>\n", listed.out.substr(0, 50));
  }
}

TEST_F(CliDispatcherTest, ANodeOfTheTypeCommandThatIsNotACommandRunsNothingAndReportsNothing) {
  dispatcher.GetRootNamespace()->RegisterNamespaceNode(std::make_shared<OddNode>(NodeType::Command),
                                                       "odd");
  const Handled handled = Handle({"odd", "--name"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ("", handled.err);
}

// The dispatcher options.

TEST_F(CliDispatcherTest, ErrorsOfTheParserComeBeforeEverythingElse) {
  OptionParser parser = Parse({"--help", "--colour=x", "--plugin=/nosuch.so", "nosuch"});
  std::string name;
  std::string value;
  parser.ParseParameter("-ab", name, value);
  parser.ParseParameter("--x", name, value);
  const Handled handled = HandleParser(std::move(parser));
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ(
      "Errors: \n"
      "Attempt to parse option failed.  Input was : -ab\n"
      "Attempt to parse option failed.  Input was : --x\n",
      handled.err);
}

TEST_F(CliDispatcherTest, UnknownOptionsAreReportedInTheOrderTyped) {
  EXPECT_THAT(
      Apply({"--colour", "--Formatter=x", "-x", "--plugin", "--input=x", "--colour"}),
      ElementsAre("Unknown dispatcher parameter: colour", "Unknown dispatcher parameter: Formatter",
                  "Unknown dispatcher parameter: x", "Unknown dispatcher parameter: input",
                  "Unknown dispatcher parameter: colour"));
}

TEST_F(CliDispatcherTest, EveryMistakeInTheOptionsIsReportedAndTheCommandDoesNotRun) {
  DeclareParameters();
  const Handled handled = Handle({"--format-param", "x", "--formatter=simple", "--formatter=xml",
                                  "--colour=x", "try", "say", "--name", "--force"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ(
      "Errors: \n"
      "Unknown dispatcher parameter: colour\n"
      "Only one --formatter option can be passed to a command\n"
      "Unable to read format parameter x\n"
      "--name must have value\n",
      handled.err);
  EXPECT_EQ(0, command->executions);
}

TEST_F(CliDispatcherTest, TheFormatterOptionIsStoredInTheFormatParameters) {
  EXPECT_THAT(Apply({"--formatter", "xml"}), IsEmpty());
  EXPECT_EQ("xml", params.GetFormatter());
  EXPECT_THAT(Apply({}), IsEmpty());
  EXPECT_EQ("xml", params.GetFormatter());
}

TEST_F(CliDispatcherTest, AFormatterNeedsAName) {
  EXPECT_THAT(
      Apply({"--formatter", "--plugin"}),
      ElementsAre("--formatter requires the name of the formatter to use for this command"));
  EXPECT_EQ("", params.GetFormatter());
}

TEST_F(CliDispatcherTest, OnlyOneFormatterCanBeChosen) {
  EXPECT_THAT(Apply({"--formatter=simple", "--formatter"}),
              ElementsAre("Only one --formatter option can be passed to a command"));
  EXPECT_EQ("", params.GetFormatter());
}

TEST_F(CliDispatcherTest, FormatParametersAreSplitAtTheFirstEqualsSign) {
  EXPECT_THAT(Apply({"--format-param=a=b=c", "--format-param", "units:Disk.Size=Mb",
                     "--format-param=two words- = \n", "--format-param=a=last"}),
              IsEmpty());
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("a", "last"), Pair("two words- ", " \n"),
                                                  Pair("units:Disk.Size", "Mb")));
}

TEST_F(CliDispatcherTest, FormatParametersWithoutAValidKeyOrAValueAreRefused) {
  EXPECT_THAT(
      Apply({"--format-param", "=x", "--format-param", "x", "--format-param",
             "x=", "--format-param", "a_b=c", "--format-param", "good=x", "--format-param"}),
      ElementsAre("Unable to read format parameter =x", "Unable to read format parameter x",
                  "Unable to read format parameter x=", "Unable to read format parameter a_b=c",
                  "Unable to read format parameter "));
  EXPECT_THAT(params.GetParameters(), ElementsAre(Pair("good", "x")));
}

TEST_F(CliDispatcherTest, PluginsThatCannotBeLoadedAreReportedAndSkipped) {
  const ScopedTempDir folder;
  folder.MakeDirectory("first");
  const std::string broken = folder.Write("second/broken.so", "text");
  const std::string missing = folder.GetPath("missing.so");
  const Handled handled =
      Handle({"--plugin", missing, "--plugin", folder.Write("notes.txt", "text"),
              "--plugin=" + broken, "--plugin", "--plugin-dir", folder.GetPath("second"),
              "--plugin-dir", folder.GetPath("first"), "--plugin-dir", folder.GetPath("none"),
              "--plugin-dir", "--screen-width=0", "try", "say"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("done\n", handled.out);
  EXPECT_EQ("Error loading plugin " + broken +
                " skipping.  Error was: Unable to load plugin from " + broken + " : " + broken +
                ": file too short\n" + "Unable to open directory " + folder.GetPath("none") +
                " for plugin registration\n" + "Unable to load plugin " + missing +
                ": Unable to load plugin from " + missing + " : " + missing +
                ": cannot open shared object file: No such file or directory\n" +
                "Unable to load plugin " + broken + ": Unable to load plugin from " + broken +
                " : " + broken + ": file too short\n",
            handled.err);
}

// The screen.

struct WidthCase {
  const char* name;
  const char* text;
  unsigned width;
};

class CliDispatcherWidthTest : public CliDispatcherTest,
                               public ::testing::WithParamInterface<WidthCase> {};

TEST_P(CliDispatcherWidthTest, SetsTheWidth) {
  Apply({"--screen-width=77"});
  EXPECT_THAT(Apply({"--screen-width", GetParam().text}), IsEmpty());
  DisplayContext display;
  display.width = 5;
  display.height = 6;
  StreamCapture out(STDOUT_FILENO);
  dispatcher.GetDisplayContext(display);
  EXPECT_EQ(GetParam().width, display.width);
  EXPECT_EQ(6, display.height);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, CliDispatcherWidthTest,
    ::testing::Values(WidthCase{"Decimal", "80", 80}, WidthCase{"Hexadecimal", "0x50", 80},
                      WidthCase{"Octal", "010", 8}, WidthCase{"One", "1", 1},
                      WidthCase{"Largest", "9999", 9999}, WidthCase{"OneTooLarge", "10000", 5},
                      WidthCase{"TooLarge", "20000", 5}, WidthCase{"Zero", "0", 5},
                      WidthCase{"Word", "wide", 5}, WidthCase{"Empty", "--screen-width", 5},
                      WidthCase{"TrailingText", "40x", 40}, WidthCase{"Negative", " -1", 5},
                      WidthCase{"BeyondThirtyTwoBits", "0x100000050", 80},
                      WidthCase{"BeyondSixtyFourBits", "99999999999999999999", 5}),
    [](const auto& row) { return row.param.name; });

TEST_F(CliDispatcherTest, UsesTheLastWidthForAllLaterCommands) {
  Apply({"--screen-width=50", "--screen-width=60"});
  for (int line = 0; line < 2; ++line) {
    EXPECT_EQ("root some\nsize 60 x 0\n", Handle({"--formatter=showing", "try", "say"}).out);
  }
}

TEST_F(CliDispatcherTest, TheWidthBelongsToTheProcess) {
  Apply({"--screen-width=50"});
  DisplayContext display;
  CliDispatcher another;
  another.GetDisplayContext(display);
  EXPECT_EQ(50, display.width);
}

TEST_F(CliDispatcherTest, TheSizeIsThatOfTheTerminalUntilTheOptionReplacesTheWidth) {
  PseudoTerminal terminal;
  terminal.SetSize(123, 45);
  terminal.Start([this] {
    DisplayContext display;
    dispatcher.GetDisplayContext(display);
    const bool isTerminals = display.width == 123 && display.height == 45;
    Apply({"--screen-width=70"});
    dispatcher.GetDisplayContext(display);
    const bool isOptions = display.width == 70 && display.height == 45;
    Apply({"--screen-width=20000"});
    dispatcher.GetDisplayContext(display);
    return isTerminals && isOptions && display.width == 123 ? 0 : 1;
  });
  EXPECT_EQ(0, terminal.WaitForEnd());
}

TEST_F(CliDispatcherTest, TheFormatterForHelpPagesHasNoParameters) {
  const FormatParameters help = dispatcher.GetHelpFormatParams();
  EXPECT_EQ("commandhelp", help.GetFormatter());
  EXPECT_THAT(help.GetParameters(), IsEmpty());
}

TEST_F(CliDispatcherTest, PrintErrorPrintsAllErrorsOrNothing) {
  StreamCapture err(STDERR_FILENO);
  const auto output = CommandOutput::New();
  dispatcher.PrintError(output);
  EXPECT_EQ("", err.GetText());
  output->AddErrorMessage("");
  output->AddErrorMessage("second");
  dispatcher.PrintError(output);
  EXPECT_EQ("Errors: \n\nsecond\n", err.GetText());
}

TEST_F(CliDispatcherTest, MessagesIgnoreTheWidthOfTheStream) {
  StreamCapture err(STDERR_FILENO);
  const auto output = CommandOutput::New();
  output->AddErrorMessage("only");
  std::cerr.width(40);
  dispatcher.PrintError(output);
  dispatcher.AddExternalDirectory("/nosuch");
  std::cerr.width(0);
  EXPECT_EQ("Errors: \nonly\nUnable to open directory /nosuch for plugin registration\n",
            err.GetText());
}

// Streams.

TEST_F(CliDispatcherTest, AStreamIsHandledLineByLine) {
  const Handled handled = HandleStream(
      "# what follows is a command\n"
      "\n"
      "try say\n"
      "  \t \n"
      "--formatter nosuch try say\n"
      "try say");
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("done\ndone\n", handled.out);
  EXPECT_EQ("Errors: \nUnable to find requested formatter: nosuch\n", handled.err);
}

// A program that reads the output while the tool waits for its next line sees everything so far.
TEST_F(CliDispatcherTest, EachLineOfAStreamFlushesItsOutput) {
  for (const char* line :
       {"try\n", "try say\n", "try say --help\n", "--formatter=showing try say\n"}) {
    LimitedBuffer buffer(100000);
    std::istringstream in(line);
    std::streambuf* const before = std::cout.rdbuf(&buffer);
    dispatcher.ParseStreamInput(in);
    std::cout.rdbuf(before);
    EXPECT_NE(buffer.GetText(), "") << line;
    EXPECT_GE(buffer.GetFlushes(), 1) << line;
  }
}

TEST_F(CliDispatcherTest, AStreamsResultIsThatOfItsLastLine) {
  EXPECT_FALSE(HandleStream("try say\ntry\n# the end\n\n").result);
  EXPECT_TRUE(HandleStream("try\ntry say\n").result);
}

TEST_F(CliDispatcherTest, AStreamWithNothingToHandleSucceeds) {
  EXPECT_TRUE(HandleStream("").result);
  EXPECT_TRUE(HandleStream("\n  \n# x\n\"\"").result);
}

TEST_F(CliDispatcherTest, LinesShareOnlyTheScreenWidthAndUseTheNameVexil) {
  const Handled handled = HandleStream(
      "--screen-width 50 --formatter showing --format-param a=b try say\n"
      "try say\n"
      "--formatter showing try say\n"
      "try\n");
  EXPECT_EQ("root some\nsize 50 x 0\na is b\ndone\nroot some\nsize 50 x 0\nUsage: vexil ",
            handled.out.substr(0, 69));
}

TEST_F(CliDispatcherTest, TheInputOptionIsUnknownInALineOfAStream) {
  const Handled handled = HandleStream("--input nosuch try say\n--input=nosuch\n");
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("Usage: vexil ", handled.out.substr(0, 13));
  EXPECT_EQ("Errors: \nUnknown dispatcher parameter: input\n", handled.err);
}

TEST_F(CliDispatcherTest, InputReadsCommandLinesFromAFile) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("lines", "try say\ntry say\n");
  const Handled handled = Handle({"--input", file});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("done\ndone\n", handled.out);
  EXPECT_EQ("", handled.err);
}

TEST_F(CliDispatcherTest, InputTakesPrecedenceOverThePathAndOverErrorsOfTheOptions) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("lines", "try\n");
  const Handled handled =
      Handle({"--colour=x", "--formatter=a", "--formatter=b", "--input=" + file, "nosuch", "word"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("Usage: vexil ", handled.out.substr(0, 13));
  EXPECT_EQ("", handled.err);
}

TEST_F(CliDispatcherTest, InputReadsStandardInputAndSharesItWithAPrompt) {
  DeclareParameters();
  command->work = [](const auto& input, const auto& output) {
    output->SetRootObject(MetaString::New("got " + input->GetParameter("password")));
  };
  const ScopedInput in("try say --password\nsesame\ntry say --password=x\ntry say --password");
  const Handled handled = Handle({"--input", "STDIN"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("Enter value for 'password': \ngot sesame\ngot x\nEnter value for 'password': \ngot \n",
            handled.out);
  EXPECT_EQ("", handled.err);
}

TEST_F(CliDispatcherTest, InputThatCannotBeOpenedIsAnError) {
  const ScopedTempDir folder;
  const std::string missing = folder.GetPath("missing");
  const Handled handled = Handle({"--input", missing, "try", "say"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ("Unable to open file " + missing + "\n", handled.err);
}

TEST_F(CliDispatcherTest, InputFromAFolderOrWithoutANameIsAnError) {
  const ScopedTempDir folder;
  EXPECT_EQ("Unable to open file " + folder.GetPath() + "\n",
            Handle({"--input", folder.GetPath()}).err);
  const Handled empty = Handle({"--input"});
  EXPECT_FALSE(empty.result);
  EXPECT_EQ("Unable to open file \n", empty.err);
}

// Makes every further read from the file descriptor fail.
void BreakReads(int descriptor) {
  const int unreadable = open("/dev/null", O_WRONLY);
  dup2(unreadable, descriptor);
  close(unreadable);
}

// Returns the file descriptor of this process for the open file `path`.
int FindDescriptor(const std::string& path) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code isGone;
    if (std::filesystem::equivalent(entry.path(), path, isGone)) {
      return std::stoi(entry.path().filename());
    }
  }
  throw std::runtime_error("Nobody holds " + path);
}

// A line that runs a command, followed by more bytes than one read returns.
const std::string kLongLines = "try say\n" + std::string(100000, '#') + "\ntry say\n";

TEST_F(CliDispatcherTest, AFailedReadOfAFileIsAnErrorWhateverTheLastLineIs) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("lines", kLongLines);
  command->work = [&file](const auto&, const auto& output) {
    BreakReads(FindDescriptor(file));
    output->SetRootObject(MetaString::New("done"));
  };
  const Handled handled = Handle({"--input", file});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("done\n", handled.out);
  EXPECT_EQ("Unable to read file " + file + "\n", handled.err);
}

TEST_F(CliDispatcherTest, AFailedReadOfStandardInputIsAnErrorWhateverTheLastLineIs) {
  command->work = [](const auto&, const auto& output) {
    BreakReads(STDIN_FILENO);
    output->SetRootObject(MetaString::New("done"));
  };
  const ScopedInput in(kLongLines);
  const Handled handled = Handle({"--input", "STDIN"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("done\n", handled.out);
  EXPECT_EQ("Unable to read standard input\n", handled.err);
}

TEST_F(CliDispatcherTest, AnEarlierErrorOfStandardInputIsNotReported) {
  const ScopedInput in("try say\n");
  EXPECT_EQ(EOF, std::fputc('x', stdin));  // sets the error flag of the stream
  EXPECT_NE(0, std::ferror(stdin));
  const Handled handled = Handle({"--input", "STDIN"});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("done\n", handled.out);
  EXPECT_EQ("", handled.err);
}

// Replaces the input of std::cin by one line and a second one that does not fit into memory.
class OverlongInput : public std::streambuf {
 public:
  OverlongInput() : original_(std::cin.rdbuf(this)) {
    setg(line_, line_, line_ + sizeof line_ - 1);
  }
  ~OverlongInput() override { std::cin.rdbuf(original_); }

 protected:
  int_type underflow() override { throw std::bad_alloc(); }

 private:
  char line_[9] = "try say\n";
  std::streambuf* original_;
};

TEST_F(CliDispatcherTest, ALineThatDoesNotFitIntoMemoryIsAnError) {
  const OverlongInput in;
  const Handled handled = Handle({"--input", "STDIN"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("done\n", handled.out);
  EXPECT_EQ("Unable to read standard input\n", handled.err);
}

TEST_F(CliDispatcherTest, AnEmptyFileSucceeds) {
  const ScopedTempDir folder;
  const Handled handled = Handle({"--input", folder.Write("lines", "")});
  EXPECT_TRUE(handled.result);
  EXPECT_EQ("", handled.out + handled.err);
}

TEST_F(CliDispatcherTest, OnlyOneInputIsAllowed) {
  const Handled handled = Handle({"--input=a", "--input=b"});
  EXPECT_FALSE(handled.result);
  EXPECT_EQ("", handled.out);
  EXPECT_EQ("Only one --input dispatch parameter is allowed\n", handled.err);
}

}  // namespace

}  // namespace Kestrel::AutoCli

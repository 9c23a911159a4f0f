// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CliDispatcher.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <list>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/dispatch/CommandCall.h"
#include "autocli/process/TypedSecrets.h"
#include "autocli/text/Report.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CliDispatcherHelpFormatter.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "kestrel/platform/AuditTls.h"

namespace Kestrel::AutoCli {

namespace {

using CallSpec::Output;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

constexpr std::uint32_t kMaxScreenWidth = 9999;

// Flushed, because the caller may then write messages to standard error.
void Print(std::string_view text) {
  WriteUnpadded(std::cout, text);
  std::cout.flush();
}

std::string GetAuditUser() {
  const char* user = std::getenv("OPR_USERNAME");
  return user == nullptr ? std::string() : user;
}

bool IsKnownOption(const std::string& name) {
  constexpr std::array<std::string_view, 7> kNames = {
      "h", "help", "formatter", "plugin-dir", "plugin", "format-param", "screen-width"};
  return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

bool IsHelpWanted(const OptionParser& parser) {
  return parser.HasDispatcherParameter("h") || parser.HasDispatcherParameter("help");
}

void ChooseFormatter(const OptionParser& parser, FormatParameters& params,
                     const std::shared_ptr<Output>& output) {
  const std::vector<std::string> values = parser.GetDispatcherParameter("formatter");
  if (values.size() > 1) {
    output->AddErrorMessage("Only one --formatter option can be passed to a command");
  } else if (values.size() == 1 && values[0].empty()) {
    output->AddErrorMessage(
        "--formatter requires the name of the formatter to use for this command");
  } else if (values.size() == 1) {
    params.SetFormatter(values[0]);
  }
}

bool IsFormatKeyCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ' ||
         c == '.' || c == '-' || c == ':';
}

// The form is key=value. Neither key nor value is empty; a key consists of the characters above.
void SetFormatParameters(const OptionParser& parser, FormatParameters& params,
                         const std::shared_ptr<Output>& output) {
  for (const std::string& text : parser.GetDispatcherParameter("format-param")) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsFormatKeyCharacter);
    const bool isParameter = end != text.begin() && text.end() - end > 1 && *end == '=';
    if (isParameter) {
      params.SetParameter(std::string(text.begin(), end), std::string(end + 1, text.end()));
    } else {
      output->AddErrorMessage("Unable to read format parameter " + text);
    }
  }
}

// Adds the command parameters to `input`, and the mistakes in them to `output`.
void AddParameters(OptionParser& parser, CommandInput& input, Output& output) {
  // The parameters are requested before the errors, because processing them adds errors.
  for (const auto& [name, value] : parser.GetCommandParameters()) {
    input.AddParameter(name, value);
  }
  for (const std::string& error : parser.GetParseErrors()) {
    output.AddErrorMessage(error);
  }
}

/// Wipes the secrets in a parser and an input when it is destroyed.
class SecretWipe {
 public:
  SecretWipe(OptionParser& parser, const CommandInput& input) : parser_(parser), input_(input) {}
  SecretWipe(const SecretWipe&) = delete;
  SecretWipe& operator=(const SecretWipe&) = delete;
  ~SecretWipe() {
    if (!TypedSecrets::AreHeld()) {
      return;
    }
    // The values were not declared const, and no caller reads them afterwards.
    for (const auto& [name, value] : parser_.GetCommandParameters()) {
      TypedSecrets::WipeIfSecret(const_cast<std::string&>(value));
    }
    for (const auto& [name, values] : input_.GetParameters()) {
      for (const std::string& value : values) {
        TypedSecrets::WipeIfSecret(const_cast<std::string&>(value));
      }
    }
  }

 private:
  OptionParser& parser_;
  const CommandInput& input_;
};

// Returns how `output` is printed unless the user chooses otherwise. Help is printed in the same
// way for all commands.
FormatParameters GetDefaultFormat(const CliDispatcher& dispatcher, const Command* command,
                                  const Output& output) {
  if (output.GetOutputType() == Output::Help) {
    return dispatcher.GetHelpFormatParams();
  }
  const bool isOrdinary = output.GetOutputType() == Output::Ordinary;
  return isOrdinary && command != nullptr ? command->GetDefaultOutputFormatParameters()
                                          : FormatParameters();
}

// A failed read ends the loop over the lines just as the end of the input does. It must be
// reported, because lines may be lost. std::cin is bad only if a line did not fit into memory.
bool ReadStandardInput(CliDispatcher& dispatcher) {
  std::clearerr(stdin);
  const bool result = dispatcher.ParseStreamInput(std::cin);
  if (std::ferror(stdin) == 0 && !std::cin.bad()) {
    return result;
  }
  Report("Unable to read standard input");
  return false;
}

bool ReadFile(CliDispatcher& dispatcher, const std::string& name) {
  std::ifstream file(name);
  // A directory can be opened, but reading it fails.
  if (!file || (file.peek(), file.bad())) {
    Report("Unable to open file " + name);
    return false;
  }
  const bool result = dispatcher.ParseStreamInput(file);
  if (!file.bad()) {
    return result;
  }
  Report("Unable to read file " + name);
  return false;
}

const char* GetTypeName(NodeType type) {
  switch (type) {
    case NodeType::Namespace:
      return "Namespace";
    case NodeType::Command:
      return "Command";
    default:
      return "Unknown";
  }
}

std::shared_ptr<MetaStruct> DescribeNode(const std::string& name, const std::string& description,
                                         const std::string& type) {
  std::shared_ptr<MetaStruct> structure = MetaStruct::New("NamespaceNode");
  structure->SetField("Name", name);
  structure->SetField("Description", description);
  structure->SetField("Type", type);
  return structure;
}

std::shared_ptr<MetaList> DescribeChildren(NamespaceNode& node) {
  std::shared_ptr<MetaList> children =
      MetaList::New(MetaType::Struct, DescribeNode(std::string(), std::string(), std::string()));
  for (const std::shared_ptr<NamespaceNode>& child : node.GetNamespaceNodes()) {
    children->Add(
        DescribeNode(child->GetName(), child->GetDescription(), GetTypeName(child->GetType())));
  }
  return children;
}

std::shared_ptr<MetaList> DescribePath(NamespaceNode& node) {
  const std::list<std::string> words = node.GetPath();
  std::shared_ptr<MetaList> path = MetaList::New(MetaType::String);
  path->Reserve(words.size());
  for (const std::string& word : words) {
    path->Add(word);
  }
  return path;
}

}  // namespace

std::uint32_t CliDispatcher::screenWidth_ = 0;

CliDispatcher::CliDispatcher() = default;

CliDispatcher::~CliDispatcher() = default;

void CliDispatcher::HandleArgvInput(int argc, const char* const* argv) {
  OptionParser parser;
  parser.ParseArgv(argc, argv);
  std::exit(HandleOptions(parser, true) ? EXIT_SUCCESS : EXIT_FAILURE);
}

bool CliDispatcher::ParseStreamInput(std::istream& in) {
  bool result = true;
  for (std::string line; std::getline(in, line);) {
    OptionParser parser;
    if (!parser.ParseString(line)) {
      result = HandleOptions(parser, false);
    }
  }
  return result;
}

bool CliDispatcher::HandleOptions(OptionParser& parser, bool fromArgv) {
  const AuditTls::AuditParamOnStack audit("user", GetAuditUser());
  const std::shared_ptr<CommandOutput> output = CommandOutput::New();
  for (const std::string& error : parser.GetParseErrors()) {
    output->AddErrorMessage(error);
  }
  if (output->HasError()) {
    PrintError(output);
    return false;
  }
  dispatcherName_ = parser.GetDispatcher();
  FormatParameters choices;
  if (!HandleDispatcherOptions(parser, choices, output)) {
    std::exit(EXIT_FAILURE);
  }
  // Errors of the options are printed only for a command, not for --input or a list of children.
  if (fromArgv && parser.HasDispatcherParameter("input")) {
    return ReadInput(parser.GetDispatcherParameter("input"));
  }
  return HandlePath(parser, choices, output);
}

bool CliDispatcher::ReadInput(const std::vector<std::string>& names) {
  if (names.size() > 1) {
    Report("Only one --input dispatch parameter is allowed");
    return false;
  }
  return names[0] == "STDIN" ? ReadStandardInput(*this) : ReadFile(*this, names[0]);
}

bool CliDispatcher::HandlePath(OptionParser& parser, const FormatParameters& choices,
                               const std::shared_ptr<CommandOutput>& output) {
  std::list<std::string> path = parser.GetCommandPath();
  if (path.empty()) {
    PrintChildren(GetRootNamespace(), output);
    return false;
  }
  const std::shared_ptr<NamespaceNode> node = GetRootNamespace()->ResolveNode(path);
  if (node == nullptr) {
    // Only a class of nodes that a plug-in defines can return null; all others throw.
    if (parser.HasCommandParameter("help") || parser.HasCommandParameter("h")) {
      PrintChildren(GetRootNamespace(), output);
    }
    return false;
  }
  if (node->GetType() != NodeType::Command) {
    PrintChildren(node, output);
    return false;
  }
  return RunCommand(node, parser, choices, output);
}

bool CliDispatcher::RunCommand(const std::shared_ptr<NamespaceNode>& node, OptionParser& parser,
                               const FormatParameters& choices,
                               const std::shared_ptr<CommandOutput>& output) {
  const TypedSecrets secrets;
  const std::shared_ptr<CommandInput> input = CommandInput::New();
  const SecretWipe wipe(parser, *input);
  input->SetDispatcher(dispatcherName_);
  input->SetCommandPath(parser.GetCommandPath());
  if (const auto spec = std::dynamic_pointer_cast<CommandSpec>(node); spec != nullptr) {
    parser.SetInputSpec(spec->GetInputSpec());
  }
  AddParameters(parser, *input, *output);
  // Null for a node that has the type of a command but is not a Command: nothing runs, and there is
  // no message.
  const auto command = std::dynamic_pointer_cast<Command>(node);
  const bool isDone =
      !output->HasError() && command != nullptr && CallCommand(*command, input, output);
  if (output->HasError()) {
    PrintError(output);
    return false;
  }
  FormatParameters format = GetDefaultFormat(*this, command.get(), *output);
  format.OverrideValues(choices);
  if (isDone && !output->HasError()) {
    DisplayContext display;
    GetDisplayContext(display);
    FormatOutput(output, format, display, std::cout);
    std::cout.flush();
  }
  PrintError(output);
  return !output->HasError();
}

bool CliDispatcher::HandleDispatcherOptions(OptionParser& parser, FormatParameters& params,
                                            const std::shared_ptr<Output>& output) {
  ValidateDispatcherParameters(parser, output);
  if (IsHelpWanted(parser)) {
    PrintUsage();
    return false;
  }
  const std::vector<std::string> widths = parser.GetDispatcherParameter("screen-width");
  if (!widths.empty()) {
    screenWidth_ = static_cast<std::uint32_t>(std::strtol(widths.back().c_str(), nullptr, 0));
  }
  ChooseFormatter(parser, params, output);
  LoadPlugins(parser);
  SetFormatParameters(parser, params, output);
  return true;
}

void CliDispatcher::LoadPlugins(const OptionParser& parser) {
  for (const std::string& folder : parser.GetDispatcherParameter("plugin-dir")) {
    if (!folder.empty()) {
      AddExternalDirectory(folder);
    }
  }
  for (const std::string& file : parser.GetDispatcherParameter("plugin")) {
    if (file.empty()) {
      continue;
    }
    try {
      AddPlugin(file);
    } catch (const KestrelException& error) {
      Report("Unable to load plugin " + file + ": " + error.what());
    }
  }
}

void CliDispatcher::PrintUsage() const {
  Print(dispatcherName_ +
        " [dispatcher options] <namespaces> <command> [options]\n"
        "      For a list of available namespaces run " +
        dispatcherName_ +
        " with no arguments.  \n"
        "      Objects can be listed by specifying just the namespace.\n"
        "      Commands can be listed by specifying the namespace and object.\n"
        "\n"
        " Dispatcher Options: \n"
        "       --plugin-dir                    Add all the plug-ins from this directory\n"
        "       --plugin                        Add a specific file plugin.  (Multiple --plugin "
        "options can be passed.)\n"
        "       --formatter <formatter>         Override the formatter to use for a given command\n"
        "       --format-param <key>=<value>    Set a formatter parameter to give the formatter "
        "information about how to format the command\n"
        "       --screen-width <width>          Use the specified screen width when formatting "
        "text\n"
        "    -h|--help                          Show this message.\n"
        "\n"
        "\n");
}

void CliDispatcher::ValidateDispatcherParameters(OptionParser& parser,
                                                 const std::shared_ptr<Output>& output) {
  for (const auto& [name, value] : parser.GetDispatcherParameters()) {
    if (!IsKnownOption(name)) {
      output->AddErrorMessage("Unknown dispatcher parameter: " + name);
    }
  }
}

void CliDispatcher::GetDisplayContext(DisplayContext& display) const {
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
    display.width = size.ws_col;
    display.height = size.ws_row;
  }
  if (screenWidth_ != 0 && screenWidth_ <= kMaxScreenWidth) {
    display.width = static_cast<std::uint16_t>(screenWidth_);
  }
}

FormatParameters CliDispatcher::GetHelpFormatParams() const {
  FormatParameters params;
  params.SetFormatter("commandhelp");
  return params;
}

void CliDispatcher::PrintError(const std::shared_ptr<Output>& output) const {
  if (!output->HasError()) {
    return;
  }
  std::string text = "Errors: ";
  for (const std::string& error : output->GetErrors()) {
    text += "\n" + error;
  }
  Report(TypedSecrets::Mask(text));
}

void CliDispatcher::PrintChildren(std::shared_ptr<NamespaceNode> node,
                                  std::shared_ptr<CommandOutput> output) {
  const std::shared_ptr<MetaStruct> listing = MetaStruct::New("VexilCommandPrint");
  listing->SetField("Dispatcher", dispatcherName_);
  listing->SetField("Path", DescribePath(*node));
  listing->SetField("NamespaceNodes", DescribeChildren(*node));
  output->SetRootObject(listing);

  DisplayContext display;
  GetDisplayContext(display);
  FormatParameters params = GetHelpFormatParams();
  CliDispatcherHelpFormatter().Format(output, params, display, std::cout);
  std::cout.flush();
}

}  // namespace Kestrel::AutoCli

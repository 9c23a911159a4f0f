// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/autocli/CommandInput.h>
#include <kestrel/autocli/Dispatcher.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/OutputSpec.h>

#include <exception>
#include <string>

#include "plugins/host/frame/Parameter.h"
#include "plugins/vexil/CommandDescription.h"
#include "plugins/vexil/CommandLookup.h"
#include "plugins/vexil/ToolCommands.h"
#include "tools/catalog/PluginOrigins.h"
#include "tools/catalog/ReadTree.h"

namespace Kestrel::Vexil {
namespace {

using AutoCli::CommandInput;
using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;

/// Returns a sentence with the command line that lists the commands that the user may have meant.
std::string HowToList(const Input* input, const CommandLookup& lookup) {
  const auto* const commandInput = dynamic_cast<const CommandInput*>(input);
  const std::string tool = commandInput != nullptr ? commandInput->GetDispatcher() : "vexil";
  return "To list the commands: " + tool + " vexil command list" +
         (lookup.lastNamespace.empty() ? "" : " --namespace-filter " + lookup.lastNamespace);
}

class CommandDescribe final : public AutoCli::Command {
 public:
  CommandDescribe() {
    SetDescription("Describe a command: its parameters, its result and how it is printed.");
    AddExample("--path \"vexil command list\"", "Describe the command that lists all commands");
    AddExample("--path vexil.plugin.list", "Describe a command without the need for quotes");
    SetDefaultOutputFormatter("simple");
    SetDefaultOutputParameter("fields",
                              "Description,Plugin,Result Description,Result Kind,Formatter,Columns,"
                              "Parameters,Fields,Examples");
    SetDefaultOutputParameter("header:VexilCommandDescription", "%Path%");
    SetDefaultOutputParameter("header:VexilParameter", "%Name%");
    SetDefaultOutputParameter("fields:VexilParameter", "Description,Summary");
    SetDefaultOutputParameter("header:VexilField", "%Path%");
    SetDefaultOutputParameter("fields:VexilField", "Documentation,Kind");
    SetDefaultOutputParameter("header:VexilExample", "%Description%");
    SetDefaultOutputParameter("fields:VexilExample", "Line");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    Host::Parameter("path", CallSpec::String,
                    "The command's path without the name of the tool: its words in quotes, or "
                    "joined by full stops.")
        .Short("p")
        .Required()
        .AddTo(*spec);
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    DescriptionShape().DeclareStruct(*spec, "Everything that the command declares.");
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    const AutoCli::Dispatcher& dispatcher = *GetDispatcher();
    const CommandLookup lookup = FindCommand(dispatcher.GetRootNamespace(),
                                             input != nullptr ? input->GetParameter("path") : "");
    if (lookup.command == nullptr) {
      output->AddErrorMessage(lookup.reason + " " + HowToList(input.get(), lookup));
      return;
    }
    try {
      Catalog::PluginOrigins origins(dispatcher);
      output->SetRootObject(MakeDescription(Catalog::ReadCommand(*lookup.command, lookup.path),
                                            origins.FindPlugin(*lookup.command, lookup.path)));
    } catch (const std::exception& error) {
      output->AddErrorMessage("The command '" + lookup.path +
                              "' does not declare what it takes and returns: " + error.what());
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewCommandDescribe() {
  return std::make_shared<CommandDescribe>();
}

}  // namespace Kestrel::Vexil

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Commands for the end-to-end tests. Each makes one property of the tool visible from outside.

#include <fcntl.h>
#include <kestrel/autocli/PluginEntryPoint.h>
#include <kestrel/kestrel.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <ios>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Kestrel::AutoCli::Namespace;
using Kestrel::CallSpec::Input;
using Kestrel::CallSpec::InputSpec;
using Kestrel::CallSpec::Output;
using Kestrel::CallSpec::OutputSpec;
using Kestrel::CallSpec::ParameterSpec;
using Kestrel::CallSpec::ParameterType;
using Kestrel::MetaObj::MetaList;
using Kestrel::MetaObj::MetaObject;
using Kestrel::MetaObj::MetaString;
using Kestrel::MetaObj::MetaStruct;
using Kestrel::MetaObj::MetaType;

using Parameters = std::vector<std::shared_ptr<ParameterSpec>>;
using Work = std::function<std::shared_ptr<MetaObject>(const Input&)>;

class TryCommand : public Kestrel::AutoCli::Command {
 public:
  TryCommand(const char* description, Parameters parameters, std::shared_ptr<MetaObject> shape,
             Work work)
      : parameters_(std::move(parameters)), shape_(std::move(shape)), work_(std::move(work)) {
    SetDescription(description);
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    for (const auto& parameter : parameters_) {
      spec->AddParameter(parameter);
    }
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    spec->SetRootObject(shape_);
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    output->SetRootObject(work_(*input));
  }

 private:
  Parameters parameters_;
  std::shared_ptr<MetaObject> shape_;
  Work work_;
};

std::shared_ptr<ParameterSpec> MakeParameter(const char* name, const char* shortName,
                                             bool isSecret) {
  auto parameter = ParameterSpec::New(name, ParameterType::String);
  parameter->SetShortName(shortName);
  parameter->SetDescription("A text.");
  parameter->SetSecret(isSecret);
  return parameter;
}

std::shared_ptr<TryCommand> MakeTextCommand(const char* description, Parameters parameters,
                                            std::function<std::string(const Input&)> work) {
  auto command =
      std::make_shared<TryCommand>(description, std::move(parameters), MetaString::New(),
                                   [work](const Input& input) -> std::shared_ptr<MetaObject> {
                                     return MetaString::New(work(input));
                                   });
  command->SetDefaultOutputFormatter("simple");
  return command;
}

std::shared_ptr<MetaStruct> MakeRow(long number, const std::string& text) {
  auto row = MetaStruct::New("Row");
  row->SetField("Number", number);
  row->SetField("Text", text);
  return row;
}

std::shared_ptr<MetaObject> MakeRows(long count) {
  auto rows = MetaList::New(MetaType::Struct, MakeRow(0, ""));
  for (long number = 1; number <= count; ++number) {
    rows->Add(MakeRow(number, "the text of a row"));
  }
  return rows;
}

std::shared_ptr<TryCommand> MakeRowsCommand() {
  auto command = std::make_shared<TryCommand>(
      "Answers with rows.", Parameters{MakeParameter("count", "c", false)}, MakeRows(0),
      [](const Input& input) { return MakeRows(std::stol(input.GetParameter("count"))); });
  command->SetDefaultOutputFormatter("table");
  command->SetDefaultOutputParameter("wrap-last", "true");
  return command;
}

std::shared_ptr<TryCommand> MakeQuietCommand() {
  auto command = MakeTextCommand("Answers, but nothing is printed.", {},
                                 [](const Input&) { return std::string("unseen"); });
  command->SetDefaultOutputFormatter("");
  return command;
}

std::string Say(const Input& input) { return input.GetParameter("text"); }

std::string Unlock(const Input& input) {
  return "password '" + input.GetParameter("password") + "' pin '" + input.GetParameter("pin") +
         "'";
}

// Opens a file and does not close its file descriptor. Later output of the tool must not go to it.
std::string Hold(const Input& input) {
  return open(input.GetParameter("text").c_str(), O_WRONLY) == -1 ? "refused" : "held";
}

std::string WriteItself(const Input&) {
  std::cout << "written by the plug-in\n";
  std::printf("and printed\n");
  return "answered";
}

std::string Quit(const Input&) {
  std::cout << "leaving\n";
  std::exit(0);
}

std::string DemandExceptions(const Input&) {
  std::cout.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  return "demanded";
}

std::string Fail(const Input&) { throw std::runtime_error("no fuel"); }

void AddDeepNamespaces(const std::shared_ptr<Namespace>& root) {
  std::shared_ptr<Kestrel::AutoCli::NamespaceNode> node = root;
  for (int depth = 0; depth < 200; ++depth) {
    node = node->SubNamespace("deep");
  }
  node->RegisterNamespaceNode(
      MakeTextCommand("Answers from far below.", {},
                      [](const Input&) { return std::string("from far below"); }),
      "end");
}

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Namespace> root) {
  const Parameters text = {MakeParameter("text", "t", false)};
  const auto space = Namespace::New();
  space->SetDescription("Commands to try the tool with.");
  const auto say = MakeTextCommand("Answers with the text it is given.", text, Say);
  say->AddExample("--text hello", "Answer with one word");
  space->RegisterNamespaceNode(say, "say");
  space->RegisterNamespaceNode(
      MakeTextCommand("Tells the secrets it is given.",
                      {MakeParameter("password", "p", true), MakeParameter("pin", "i", true)},
                      Unlock),
      "unlock");
  space->RegisterNamespaceNode(MakeRowsCommand(), "rows");
  space->RegisterNamespaceNode(MakeQuietCommand(), "quiet");
  space->RegisterNamespaceNode(MakeTextCommand("Keeps a file open.", text, Hold), "hold");
  space->RegisterNamespaceNode(MakeTextCommand("Writes on its own.", {}, WriteItself), "write");
  space->RegisterNamespaceNode(MakeTextCommand("Ends the process.", {}, Quit), "quit");
  space->RegisterNamespaceNode(MakeTextCommand("Fails.", {}, Fail), "fail");
  space->RegisterNamespaceNode(
      MakeTextCommand("Makes standard output throw.", {}, DemandExceptions), "demand");
  root->RegisterNamespaceNode(space, "try");
  AddDeepNamespaces(root);
}

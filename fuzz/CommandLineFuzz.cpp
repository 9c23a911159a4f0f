// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: the arguments of the tool, one per line.
//
// Covers everything from the arguments to the printed output, with the built-in plug-in and a
// command that takes every kind of parameter. An unknown path throws KestrelException and prints
// nothing, a successful command prints no messages, and the size of the output is bounded.

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::CliDispatcher;
using AutoCli::Command;
using AutoCli::OptionParser;
using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterConstraintType;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

std::shared_ptr<MetaStruct> MakeRow(const std::string& name,
                                    const std::vector<std::string>& values) {
  const std::shared_ptr<MetaStruct> row = MetaStruct::New("Given");
  row->SetField("Name", name);
  row->SetField("Count", static_cast<long>(values.size()));
  row->SetField("Last", values.empty() ? std::string() : values.back());
  row->SetField("Empty", values.empty() || values.back().empty());
  row->SetField("Values", values);
  return row;
}

// Returns a row for each of its parameters.
class EchoCommand : public Command {
 public:
  EchoCommand() {
    SetDescription("Lists its parameters.");
    SetDefaultOutputFormatter("table");
    SetDefaultOutputParameter("fields:Given", "Name,Count,Last");
    AddExample("--text a --number 1", "Passes two parameters");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    // No secret parameter: the parser would read it from this program's standard input.
    Declare(*spec, "text", ParameterType::String, "t");
    Declare(*spec, "number", ParameterType::Int, "n")->SetConstraint(MakeRange());
    Declare(*spec, "bool", ParameterType::Bool, "b");
    Declare(*spec, "flag", ParameterType::Flag, "f");
    Declare(*spec, "word", ParameterType::StringList, "w")->SetConstraint(MakeWords());
    Declare(*spec, "numbers", ParameterType::IntList, "");
    Declare(*spec, "bools", ParameterType::BoolList, "");
    Declare(*spec, "pattern", ParameterType::String, "p")->SetConstraint(MakePattern());
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    spec->SetRootObject(MetaList::New(MetaType::Struct, MakeRow("", {})));
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    const std::shared_ptr<MetaList> rows = MetaList::New(MetaType::Struct, MakeRow("", {}));
    for (const auto& [name, values] : input->GetParameters()) {
      rows->Add(MakeRow(name, values));
    }
    output->SetRootObject(rows);
  }

 private:
  static std::shared_ptr<ParameterSpec> Declare(InputSpec& spec, const char* name,
                                                ParameterType type, const std::string& shortName) {
    std::shared_ptr<ParameterSpec> parameter = ParameterSpec::New(name, type);
    parameter->SetRequired(false);
    parameter->SetDescription("One of %REGEX% %ENUM% %FULLENUM%");
    if (!shortName.empty()) {
      parameter->SetShortName(shortName);
    }
    spec.AddParameter(parameter);
    return parameter;
  }

  static std::shared_ptr<ParameterConstraint> MakeRange() {
    auto range = ParameterConstraint::New(ParameterConstraintType::IntRange);
    range->SetIntRange(-5, 5);
    return range;
  }

  static std::shared_ptr<ParameterConstraint> MakeWords() {
    auto words = ParameterConstraint::New(ParameterConstraintType::StringEnum);
    words->AddStringEnum("one", "the first");
    words->AddStringEnum("two");
    return words;
  }

  static std::shared_ptr<ParameterConstraint> MakePattern() {
    auto pattern = ParameterConstraint::New(ParameterConstraintType::StringRegex);
    pattern->SetStringRegex("[a-c]+\\d*");
    return pattern;
  }
};

// Redirects a stream to a string for as long as the object lives.
class StreamRedirect {
 public:
  explicit StreamRedirect(std::ostream& stream)
      : stream_(stream), old_(stream.rdbuf(text_.rdbuf())) {}
  ~StreamRedirect() { stream_.rdbuf(old_); }
  StreamRedirect(const StreamRedirect&) = delete;
  StreamRedirect& operator=(const StreamRedirect&) = delete;

  std::string GetText() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::ostream& stream_;
  std::streambuf* const old_;
};

// Whether there is an option that a fuzz target must not use because it ends the process, loads a
// plug-in or reads a file.
bool HasExcludedOption(const OptionParser& parser) {
  for (const char* option : {"h", "help", "plugin", "plugin-dir", "input"}) {
    if (parser.HasDispatcherParameter(option)) {
      return true;
    }
  }
  return false;
}

bool PathExists(CliDispatcher& dispatcher, const OptionParser& parser) {
  try {
    std::list<std::string> path = parser.GetCommandPath();
    return path.empty() || dispatcher.GetRootNamespace()->ResolveNode(path) != nullptr;
  } catch (const KestrelException&) {
    return false;
  }
}

void RequireHandles(CliDispatcher& dispatcher, OptionParser& parser) {
  const bool pathExists = PathExists(dispatcher, parser);
  const Usage usage(parser.ToString().size());
  const StreamRedirect out(std::cout);
  const StreamRedirect messages(std::cerr);
  bool isDone = false;
  bool hasThrown = false;
  try {
    isDone = dispatcher.HandleOptions(parser, true);
  } catch (const KestrelException&) {
    hasThrown = true;
  }
  const std::string text = out.GetText();
  const std::string errors = messages.GetText();
  usage.Check(text.size() + errors.size());
  Require(pathExists || hasThrown, "an unknown path throws");
  Require(pathExists || (text.empty() && errors.empty()), "an unknown path prints nothing");
  Require(!isDone || errors.empty(), "a successful command prints no messages");
  Require(errors.empty() || errors.compare(0, 9, "Errors: \n") == 0,
          "messages follow their heading");
  Require(text.size() + errors.size() <= kMaxOutputOfFormatter,
          "the size of the output is bounded");
}

CliDispatcher& GetDispatcher() {
  // Never destroyed: a dispatcher must not be a static object.
  static CliDispatcher* const dispatcher = [] {
    auto* const made = new CliDispatcher();
    made->GetRootNamespace()->SubNamespace("sample")->RegisterNamespaceNode(
        std::make_shared<EchoCommand>(), "echo");
    return made;
  }();
  return *dispatcher;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  if (size > kMaxInputOfFormatter) {
    return 0;
  }
  FuzzInput input(data, size);
  // The dispatcher would otherwise keep the width of the previous input.
  std::vector<std::string> tokens = {"--screen-width=80"};
  while (!input.IsEmpty()) {
    tokens.emplace_back(input.TakeLine());
  }
  OptionParser parser;
  parser.ParseVector(tokens);
  if (!HasExcludedOption(parser)) {
    RequireHandles(GetDispatcher(), parser);
  }
  return 0;
}

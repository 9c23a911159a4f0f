// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: the index of the word at the cursor, then the words of the line after the program's name,
// one per line.
//
// Completes the line in a small tree, both as a line of vexil and as a line of vexil-explain. Every
// candidate begins with the typed part. It is offered again when it has been typed completely,
// unless it ends with "=". The last line of the output is one of those that the shells' scripts
// rely on. For the same line, each hint is one line, and there are at most three suggestions.

#include "tools/complete/Complete.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/Hints.h"
#include "vexil/Suggestions.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::CliDispatcher;
using AutoCli::Command;
using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;
using Complete::Completion;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using Vexil::Words;

// The number of words is limited, so that the target spends its time on their meaning.
constexpr std::size_t kMaxWords = 24;

class PaintCommand : public Command {
 public:
  PaintCommand() {
    SetDefaultOutputFormatter("table");
    AddMetaData("complete:file", "file");
    AddMetaData("complete:folder", "directory");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    auto colours = ParameterConstraint::New(CallSpec::StringEnum);
    colours->AddStringEnum("red", "Like fire.");
    colours->AddStringEnum("rose, old");
    Declare(*spec, "colour", "c", CallSpec::StringList)->SetConstraint(colours);
    Declare(*spec, "secret", "s", CallSpec::String)->SetSecret(true);
    Declare(*spec, "wet", "w", CallSpec::Bool);
    Declare(*spec, "force", "f", CallSpec::Flag);
    Declare(*spec, "file", "i", CallSpec::String);
    Declare(*spec, "folder", "o", CallSpec::String);
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    const auto row = MetaStruct::New("Row");
    row->SetField("Name", "");
    row->SetField("Mount Point", "");
    auto spec = OutputSpec::New();
    spec->SetRootObject(MetaList::New(MetaObj::MetaType::Struct, row));
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& /*input*/,
                       const std::shared_ptr<Output>& /*output*/) override {
    Require(false, "no command runs");
  }

 private:
  static std::shared_ptr<ParameterSpec> Declare(InputSpec& spec, const char* name,
                                                const char* shortName,
                                                CallSpec::ParameterType type) {
    std::shared_ptr<ParameterSpec> parameter = ParameterSpec::New(name, type);
    parameter->SetShortName(shortName);
    parameter->SetRequired(false);
    spec.AddParameter(parameter);
    return parameter;
  }
};

CliDispatcher& GetDispatcher() {
  // Never destroyed: a dispatcher must not be a static object.
  static CliDispatcher* const dispatcher = [] {
    auto* const made = new CliDispatcher();
    made->GetRootNamespace()->SubNamespace("paint")->RegisterNamespaceNode(
        std::make_shared<PaintCommand>(), "list");
    return made;
  }();
  return *dispatcher;
}

Completion CompleteAt(const Words& words, std::size_t index) {
  return CompleteLine(GetDispatcher(), Complete::ReadCursorLine(words, index),
                      Complete::Deadline::max());
}

bool Offers(const Completion& completion, const std::string& word) {
  for (const auto& candidate : completion.candidates) {
    if (candidate.word == word) {
      return true;
    }
  }
  return false;
}

void RequireCompletes(Words words, std::size_t index) {
  const Completion completion = CompleteAt(words, index);
  const std::string typed = words[index];
  for (const auto& candidate : completion.candidates) {
    Require(candidate.word.compare(0, typed.size(), typed) == 0,
            "a candidate begins with what was typed");
    words[index] = candidate.word;
    const Words withoutRest(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(index) + 1);
    // After a candidate that ends with "=", values are offered instead. A candidate could take the
    // next word as its value, so it is enough that it is offered without the words after it.
    Require(candidate.word.back() == '=' || Offers(CompleteAt(words, index), candidate.word) ||
                Offers(CompleteAt(withoutRest, index), candidate.word),
            "a candidate that has been typed is offered");
  }
  const std::string text = WriteCompletion(completion);
  const std::size_t last = text.rfind('\n', text.size() - 2);
  const std::string directive = text.substr(last == std::string::npos ? 0 : last + 1);
  Require(directive == ":\n" || directive == ":files\n" || directive == ":folders\n" ||
              directive == ":nospace\n",
          "the last line is a directive");
}

void RequireAdvises(const Words& words) {
  const auto line = Vexil::SplitCommandLine({words.begin() + 1, words.end()});
  for (const std::string& hint : FindHints(GetDispatcher(), line)) {
    Require(hint.find('\n') == std::string::npos, "a hint is one line");
  }
  const auto paths = Vexil::ListNodePaths(*GetDispatcher().GetRootNamespace());
  Require(SuggestPaths(paths, line.path).size() <= 3, "there are three suggestions at most");
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  FuzzInput input(data, size);
  const int index = input.TakeNumber(1, kMaxWords);
  Words words = {"vexil-explain"};
  while (!input.IsEmpty() && words.size() < kMaxWords) {
    words.push_back(input.TakeText());
  }
  words.resize(std::max(words.size(), static_cast<std::size_t>(index) + 1));
  GetDispatcher();
  const Usage usage(size);
  const Completion completion = CompleteAt(words, static_cast<std::size_t>(index));
  usage.Check(WriteCompletion(completion).size());
  RequireCompletes(words, static_cast<std::size_t>(index));
  words[0] = "vexil";
  RequireCompletes(words, static_cast<std::size_t>(index));
  RequireAdvises(words);
  return 0;
}

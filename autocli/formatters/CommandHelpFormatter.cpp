// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandHelpFormatter.h"

#include <algorithm>
#include <cstddef>
#include <ios>
#include <string_view>

#include "autocli/formatters/ValueView.h"
#include "autocli/text/FitText.h"
#include "autocli/text/StartsWith.h"
#include "autocli/text/TextWriter.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaBool;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;

namespace {

constexpr char kSecretWarning[] =
    "\nWARNING: Providing secret values on the command line is insecure because it may be logged "
    "or preserved in history files. Instead, specify this option with no value on the command "
    "line, and enter the value on the supplied prompt.";

constexpr std::string_view kDescriptionEnd = " :";
constexpr std::string_view kSyntaxStart = "# ";

std::string GetText(const MetaStruct& structure, const std::string& name) {
  const auto* text = ViewAs<MetaString>(structure.FindField(name));
  return text == nullptr ? std::string() : text->GetValue();
}

bool IsTrue(const MetaStruct& structure, const char* name) {
  const auto* flag = ViewAs<MetaBool>(structure.FindField(name));
  return flag != nullptr && flag->GetValue();
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// Calls `visit` with each structure in `list`; skips other elements.
template <typename Visit>
void ForEachStruct(const MetaList& list, const Visit& visit) {
  for (const auto& element : list.GetObjects()) {
    if (const auto* structure = ViewAs<MetaStruct>(element.get())) {
      visit(*structure);
    }
  }
}

/// Writes one help page.
class HelpPage {
 public:
  HelpPage(const MetaStruct& help, int width, TextWriter& writer)
      : help_(help),
        command_(GetText(help, "Dispatcher") + " " + GetText(help, "Path")),
        width_(width),
        writer_(writer) {}

  void Write() {
    writer_.Append("Usage: ");
    writer_.Append(command_);
    writer_.Append(" <options>\n\nDescription: ");
    writer_.Append(GetText(help_, "Description"));
    writer_.Append("\n\n");
    const std::shared_ptr<MetaObject> parameters = help_.GetField("Param List");
    if (const auto* list = ViewAs<MetaList>(parameters.get())) {
      WriteParameters(*list);
    }
    const std::shared_ptr<MetaObject> examples = help_.GetField("Example List");
    if (const auto* list = ViewAs<MetaList>(examples.get());
        list != nullptr && list->GetCount() > 0) {
      WriteExamples(*list);
    }
  }

  bool HasParameters() const { return hasParameters_; }

 private:
  void WriteParameters(const MetaList& list) {
    std::size_t longest = 0;
    ForEachStruct(list, [&](const MetaStruct& parameter) {
      longest = std::max(longest, GetText(parameter, "Name").size());
      hasParameters_ = true;
    });
    ForEachStruct(list,
                  [&](const MetaStruct& parameter) { WriteParameter(parameter, longest + 1); });
  }

  void WriteParameter(const MetaStruct& parameter, std::size_t nameWidth) {
    const std::string shortName = GetText(parameter, "Short Name");
    writer_.Append(shortName.empty() ? std::string("     --") : "  -" + shortName + "|--");
    writer_.AppendLeft(GetText(parameter, "Name"), nameWidth + 2);
    FitRules rules;
    rules.indent = static_cast<int>(nameWidth + 9);
    rules.width = width_;
    rules.skipFirstIndent = true;
    rules.endLine = true;
    rules.splitLines = true;
    FitText(DescribeParameter(parameter), rules, writer_);
  }

  static std::string DescribeParameter(const MetaStruct& parameter) {
    const bool isRequired = IsTrue(parameter, "Required");
    const bool isSecret = IsTrue(parameter, "Secret");
    std::string text = GetText(parameter, "Description");
    if (isRequired || isSecret) {
      text += isRequired ? (isSecret ? " (required secret)" : " (required)") : " (secret)";
    }
    return isSecret ? text + kSecretWarning : text;
  }

  void WriteExamples(const MetaList& list) {
    writer_.Append("\nExamples: \n\n");
    ForEachStruct(list, [this](const MetaStruct& example) { WriteExample(example); });
  }

  // The description may already end with " :", and the syntax may already begin with "# ".
  void WriteExample(const MetaStruct& example) {
    std::string description = GetText(example, "Description");
    if (!EndsWith(description, kDescriptionEnd)) {
      description += kDescriptionEnd;
    }
    WriteBlock(description, 4);
    const std::string syntax = GetText(example, "Syntax");
    if (!StartsWith(syntax, kSyntaxStart)) {
      writer_.Append(kSyntaxStart);
      writer_.Append(command_);
      writer_.Append(' ');
    }
    writer_.Append(syntax);
    // The spaces after the example are part of the page.
    WriteBlock("", 8);
    writer_.Append('\n');
  }

  void WriteBlock(std::string_view text, int indent) {
    FitRules rules;
    rules.indent = indent;
    rules.width = width_;
    rules.endLine = true;
    FitText(text, rules, writer_);
  }

  const MetaStruct& help_;
  const std::string command_;
  const int width_;
  TextWriter& writer_;
  bool hasParameters_ = false;
};

}  // namespace

CommandHelpFormatter::CommandHelpFormatter() : Formatter("commandhelp") {
  description = "Handle --help output for commands";
}

CommandHelpFormatter::~CommandHelpFormatter() = default;

void CommandHelpFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                                  FormatParameters& /*parameters*/, DisplayContext& display,
                                  std::ostream& out) {
  const std::shared_ptr<MetaObject> root = output->GetRootObject();
  const auto* help = ViewAs<MetaStruct>(root.get());
  if (help == nullptr || help->GetTypeName() != "VexilCommandHelp") {
    throw KestrelException(
        "Error: Unexpected type for output, formatter expected a struct with help information");
  }
  TextWriter writer(out);
  HelpPage page(*help, display.width, writer);
  page.Write();
  if (page.HasParameters()) {
    out.unsetf(std::ios_base::adjustfield);
  }
  writer.Finish();
}

std::string GetStringField(std::shared_ptr<MetaStruct> s, const std::string& name) {
  return s == nullptr ? std::string() : GetText(*s, name);
}

}  // namespace Kestrel::AutoCli

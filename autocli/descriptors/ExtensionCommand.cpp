// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/ExtensionCommand.h"

#include <sys/wait.h>
#include <syslog.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/descriptors/TemplateParts.h"
#include "autocli/descriptors/TemplateText.h"
#include "autocli/process/ShellCommand.h"
#include "autocli/process/TypedSecrets.h"
#include "autocli/text/StartsWith.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlUtil.h"

namespace Kestrel::AutoCli {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;

namespace {

constexpr char kSingleQuote = '\'';
constexpr char kDoubleQuote = '"';

// All memory for a string that may contain a secret is reserved beforehand, because growth would
// leave a part of the secret in memory.

std::string InDoubleQuotes(const std::string& text) {
  std::string quoted;
  quoted.reserve(text.size() + 2);
  return quoted.append(1, kDoubleQuote).append(text).append(1, kDoubleQuote);
}

using Origin = MarkedText::Origin;

/// Whether a "#" precedes a newline in `value`. The "#" may begin a comment of the shell, and the
/// newline ends the comment even after a backslash: the shell would run the rest as another
/// command.
bool CanEndAComment(std::string_view value) {
  const std::size_t begin = value.find('#');
  return begin != std::string_view::npos && value.find('\n', begin) != std::string_view::npos;
}

/// Whether a "#" at `position` of a command line is at the beginning of a word.
bool IsWordBegin(const MarkedText& line, std::size_t position) {
  constexpr std::string_view kSpaces = " \t\n";
  constexpr std::string_view kOperators = ";&|()<>`";
  if (position == 0) {
    return true;
  }
  const char before = line.Bytes()[position - 1];
  return kSpaces.find(before) != std::string_view::npos ||
         (!line.IsFromValue(position - 1) && kOperators.find(before) != std::string_view::npos);
}

/// Whether bare values in a command line may begin a comment and end it.
bool CanEndAComment(const MarkedText& line) {
  const std::string& bytes = line.Bytes();
  if (bytes.find('\n') == std::string::npos) {
    return false;
  }
  bool isComment = false;
  for (std::size_t i = bytes.find_first_of("#\n"); i != std::string::npos;
       i = bytes.find_first_of("#\n", i + 1)) {
    const Origin origin = line.OriginOf(i);
    if (origin == Origin::ValueThatEndsItsComment) {
      return true;
    }
    const bool isNewline = bytes[i] == '\n';
    if (origin == Origin::BareValue && isNewline && isComment) {
      return true;
    }
    if (origin == Origin::BareValue && !isNewline) {
      isComment = isComment || IsWordBegin(line, i);
    } else if (origin == Origin::Template && isNewline) {
      isComment = false;
    }
  }
  return false;
}

/// Whether a command line contains a newline from a bare value.
bool HasBareNewline(const MarkedText& line) {
  const std::string& bytes = line.Bytes();
  std::size_t i = bytes.find('\n');
  while (i != std::string::npos && line.OriginOf(i) != Origin::BareValue) {
    i = bytes.find('\n', i + 1);
  }
  return i != std::string::npos;
}

/// Thrown for a value that must not reach the shell.
struct RefusedValue : KestrelException {
  using KestrelException::KestrelException;
};

/// All values of a parameter.
class Items {
 public:
  Items(const Input& input, const std::string& name) { input.GetParameterList(name, values_); }
  Items(const Items&) = delete;
  Items& operator=(const Items&) = delete;
  ~Items() { std::for_each(values_.begin(), values_.end(), TypedSecrets::WipeIfHeld); }

  const std::vector<std::string>& Get() const { return values_; }

 private:
  std::vector<std::string> values_;
};

/// Inserts the values of parameters into a template.
class Substitution {
 public:
  Substitution(const Input& input, bool forStdin) : input_(input), forStdin_(forStdin) {}

  /// Treats only the values of the parameter `name` as bare.
  void WatchOnly(const std::string& name) { watched_ = &name; }

  /// Returns the template with the parameters `names` inserted, one after the other.
  TemplateText Apply(const std::string& text, const std::vector<std::string>& names) const {
    const auto apply = [this](TemplateText& part, const std::string& name) { Apply(part, name); };
    if (names.size() > 1) {
      if (std::optional<TemplateText> done = ApplyInParts(text, names, apply)) {
        return *std::move(done);
      }
    }
    TemplateText whole(text);
    for (const std::string& name : names) {
      Apply(whole, name);
    }
    return whole;
  }

 private:
  void Apply(TemplateText& text, const std::string& name) const {
    ApplyValue(text, name);
    text.KeepConditionals(name);
    ApplyList(text, name);
    ApplyMultiList(text, name);
  }

  void ApplyValue(TemplateText& text, const std::string& name) const {
    const std::optional<TemplateText::ValuePlace> place = text.FindValue(name);
    if (!place.has_value()) {
      return;
    }
    const std::string& value = input_.GetParameter(name);
    if (forStdin_) {
      text.InsertValue(name, value);
      return;
    }
    const bool isQuoted = *place == TemplateText::ValuePlace::InSingleQuotes;
    std::string safe = isQuoted ? WithoutNulAnd(kSingleQuote, value) : Escaped(value);
    const WipeAtEnd wipe(safe);
    text.InsertValue(name, safe, BareOrigin(name, value));
  }

  void ApplyList(TemplateText& text, const std::string& name) const {
    const std::optional<TemplateText::ListForm> form = text.FindList(name);
    if (!form.has_value()) {
      return;
    }
    const Items items(input_, name);
    std::string value = Join(items.Get(), form->separator);
    const WipeAtEnd wipeValue(value);
    const Origin origin = form->isQuoted ? Origin::Value : BareOrigin(name, value);
    std::string safe = forStdin_ ? value : Escaped(value);
    const WipeAtEnd wipeSafe(safe);
    std::string inserted = form->isQuoted ? InDoubleQuotes(safe) : safe;
    const WipeAtEnd wipeInserted(inserted);
    text.InsertList(name, inserted, origin);
  }

  void ApplyMultiList(TemplateText& text, const std::string& name) const {
    const std::optional<TemplateText::MultiListForm> form = text.FindMultiList(name);
    if (!form.has_value()) {
      return;
    }
    const Items items(input_, name);
    const Origin origin = form->isQuoted ? Origin::Value : BareOriginOfAll(name, items);
    MarkedText values;
    for (const std::string& value : items.Get()) {
      std::string item = ListItem(value, form->isQuoted);
      const WipeAtEnd wipeItem(item);
      values.AppendTemplate(" ");
      values.Append(form->prefix);
      values.AppendTemplate(" ");
      values.AppendValue(item, origin);
    }
    text.InsertMultiList(name, values);
  }

  /// Returns the origin of the bytes of a parameter's value that is not in quotes.
  Origin BareOrigin(const std::string& name, std::string_view value) const {
    if (watched_ != nullptr && *watched_ != name) {
      return Origin::Value;
    }
    return CanEndAComment(value) ? Origin::ValueThatEndsItsComment : Origin::BareValue;
  }

  /// Like BareOrigin(), for several values: a comment that begins in one may end in another.
  Origin BareOriginOfAll(const std::string& name, const Items& items) const {
    std::string joined = Join(items.Get(), "");
    const WipeAtEnd wipe(joined);
    return BareOrigin(name, joined);
  }

  std::string ListItem(const std::string& value, bool isQuoted) const {
    if (forStdin_) {
      return isQuoted ? InDoubleQuotes(value) : value;
    }
    if (isQuoted) {
      // Between double quotes the shell still interprets "$", backquotes and backslashes.
      std::string safe = WithoutNulAnd(kDoubleQuote, value);
      const WipeAtEnd wipe(safe);
      return InDoubleQuotes(safe);
    }
    return Escaped(value);
  }

  /// Returns `values` with `separator` between them.
  static std::string Join(const std::vector<std::string>& values, const std::string& separator) {
    std::size_t size = 0;
    for (const std::string& value : values) {
      size += value.size() + separator.size();
    }
    std::string joined;
    joined.reserve(size);
    for (std::size_t i = 0; i < values.size(); ++i) {
      joined += i == 0 ? std::string_view() : separator;
      joined += values[i];
    }
    return joined;
  }

  // NUL bytes are removed, because the command line would end at the first one.

  /// Returns `value` without NUL bytes and without `c`.
  static std::string WithoutNulAnd(char c, const std::string& value) {
    std::string kept = ExtensionCommand::SanitizeChar(value, '\0');
    kept.erase(std::remove(kept.begin(), kept.end(), c), kept.end());
    return kept;
  }

  /// Returns `value` without NUL bytes, escaped by `SanitizeInput`.
  static std::string Escaped(const std::string& value) {
    std::string kept = ExtensionCommand::SanitizeChar(value, '\0');
    const WipeAtEnd wipe(kept);
    return ExtensionCommand::SanitizeInput(kept);
  }

  const Input& input_;
  const bool forStdin_;
  const std::string* watched_ = nullptr;
};

/// Throws, naming the parameter whose value could end a comment of the shell.
[[noreturn]] void Refuse(const Input& input, const std::string& text,
                         const std::vector<std::string>& names) {
  std::string refused;
  for (const std::string& name : names) {
    Substitution substitution(input, false);
    substitution.WatchOnly(name);
    TemplateText line = substitution.Apply(text, names);
    line.RemoveConditionals();
    if (CanEndAComment(line.GetMarkedText())) {
      throw RefusedValue("The value of the parameter '" + name +
                         "' is not passed to the shell: it contains a '#' and after it a newline");
    }
    refused = HasBareNewline(line.GetMarkedText()) ? name : refused;
  }
  throw RefusedValue("The value of the parameter '" + refused +
                     "' is not passed to the shell: it contains a newline, and a value before it "
                     "begins with a '#'");
}

/// A call without input has no parameters.
const Input& InputOrNone(const std::shared_ptr<Input>& input) {
  static const std::shared_ptr<Input> none = Input::New();
  return input == nullptr ? *none : *input;
}

/// Adds the lines at the start of `text` that begin with "ERROR:" to the messages of `output`.
void TakeErrorLines(std::string_view text, Output& output) {
  constexpr std::string_view kPrefix = "ERROR:";
  while (StartsWith(text, kPrefix)) {
    text.remove_prefix(kPrefix.size());
    const std::size_t end = std::min(text.find('\n'), text.size());
    output.AddErrorMessage(std::string(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void ReportNoData(const std::string& commandLine, int status, Output& output) {
  // Deliberate, because scripts match this message: the third line begins with U+0435, and the
  // number is 1 for a child that exited and 0 for one that a signal ended, not the exit code.
  const std::string message =
      "Got no data from process.\nCommand " +
      InDoubleQuotes(TypedSecrets::Mask(commandLine, ExtensionCommand::SanitizeInput)) +
      "\n\xD0\xB5xited with error code: " + std::to_string(WIFEXITED(status) ? 1 : 0);
  syslog(LOG_ERR, "%s", message.c_str());
  output.AddErrorMessage(message);
}

/// Reads the value document `text` and sets its value as the root of `output`.
void SetResult(const std::string& text, Output& output) {
  try {
    const std::shared_ptr<MetaObj::MetaObject> value = XmlUtil_ParseXmlOutput(text);
    if (value != nullptr) {
      output.SetRootObject(value);
    }
  } catch (const KestrelException& error) {
    output.AddErrorMessage(std::string("Unable to parse output of Extension Command: ") +
                           error.what());
  }
}

}  // namespace

std::shared_ptr<ExtensionCommand> ExtensionCommand::New() {
  return std::make_shared<ExtensionCommand>(ConstructionKey());
}

ExtensionCommand::ExtensionCommand(ConstructionKey) {}
ExtensionCommand::~ExtensionCommand() = default;

void ExtensionCommand::SetInputSpec(const std::shared_ptr<InputSpec>& spec) {
  declaredInput_ = spec;
}

void ExtensionCommand::SetOutputSpec(const std::shared_ptr<OutputSpec>& spec) {
  declaredOutput_ = spec;
}

void ExtensionCommand::SetExecuteCommand(const std::string& commandTemplate) {
  executeTemplate_ = commandTemplate;
}

void ExtensionCommand::SetStdin(const std::string& stdinTemplate) {
  stdinTemplate_ = stdinTemplate;
}

std::shared_ptr<InputSpec> ExtensionCommand::GetInputSpecInternal() {
  if (declaredInput_ == nullptr) {
    throw KestrelException(
        "Request for NULL InputSpec.  Extension command is incomplete and will not work");
  }
  return declaredInput_;
}

std::shared_ptr<OutputSpec> ExtensionCommand::GetOutputSpecInternal() {
  if (declaredOutput_ == nullptr) {
    throw KestrelException(
        "Request for NULL OutputSpec.  Extension command is incomplete and will not work");
  }
  return declaredOutput_;
}

void ExtensionCommand::ExecuteInternal(const std::shared_ptr<Input>& input,
                                       const std::shared_ptr<Output>& output) try {
  const char* const locale = std::getenv("LANG") == nullptr ? "LANG=en_US.UTF-8 " : "";
  std::string substituted = SubstituteInput(input, false);
  const WipeAtEnd wipeSubstituted(substituted);
  std::string commandLine = locale + substituted;
  const WipeAtEnd wipeCommandLine(commandLine);
  std::string stdinData = SubstituteInput(input, true);
  const WipeAtEnd wipeStdin(stdinData);

  const bool takesUser = GetInputSpecInternal()->IsContextSupported("user");
  const std::string user = takesUser ? InputOrNone(input).GetContext("user") : std::string();
  std::string result;
  const int status = RunShellCommand(commandLine, user, result, stdinData);

  if (result.empty()) {
    ReportNoData(commandLine, status, *output);
  } else {
    TakeErrorLines(result, *output);
  }
  if (!output->HasError()) {
    SetResult(result, *output);
  }
} catch (const RefusedValue& refusal) {
  output->AddErrorMessage(refusal.what());
}

std::string ExtensionCommand::SubstituteInput(const std::shared_ptr<Input>& input, bool forStdin) {
  const std::string& text = forStdin ? stdinTemplate_ : executeTemplate_;
  if (text.find('$') == std::string::npos) {
    return text;
  }
  const Input& given = InputOrNone(input);
  std::vector<std::string> names;
  for (const auto& parameter : GetInputSpecInternal()->GetParameters()) {
    if (given.HasParameter(parameter->GetName())) {
      names.push_back(parameter->GetName());
    }
  }
  TemplateText substituted = Substitution(given, forStdin).Apply(text, names);
  substituted.RemoveConditionals();
  if (!forStdin && CanEndAComment(substituted.GetMarkedText())) {
    Refuse(given, text, names);
  }
  return substituted.GetText();
}

std::string ExtensionCommand::SanitizeInput(const std::string& value) {
  std::string safe;
  safe.reserve(TypedSecrets::AreHeld() ? 2 * value.size() : value.size() + 16);
  for (const char c : value) {
    if (isBadChar(c)) {
      safe += '\\';
    }
    safe += c;
  }
  return safe;
}

std::string ExtensionCommand::SanitizeChar(const std::string& value, char c) {
  std::string kept = value;
  kept.erase(std::remove(kept.begin(), kept.end(), c), kept.end());
  return kept;
}

bool ExtensionCommand::isBadChar(char c) {
  constexpr std::string_view kBadChars = "\n!\"$&'()*;<>\\^`|";
  return kBadChars.find(c) != std::string_view::npos;
}

std::size_t ExtensionCommand::FindPairedTokenSize(const char* text, std::size_t position,
                                                  std::size_t length, char open, char close) {
  if (position >= length || text[position] != open) {
    return 0;
  }
  std::size_t depth = 1;
  for (std::size_t i = position + 1; i < length; ++i) {
    if (text[i] == close) {
      --depth;
    } else if (text[i] == open) {
      ++depth;
    }
    if (depth == 0) {
      return i - position + 1;
    }
  }
  return 0;
}

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: a value of the parameter "aa" and two of the list "li", one per line; then the template.
//
// Values must not be interpreted. The template is therefore filled twice: with the values, and with
// placeholders that have no meaning in a template. The results must be equal after each placeholder
// is replaced by its value, which may have been made safe in one of several ways.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzInput.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::ExtensionCommand;
using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

constexpr std::size_t kNone = std::string::npos;

// A marker in the prefix of another multiplies the result, so longer inputs would only test memory.
constexpr std::size_t kMaxInput = 4096;

struct Values {
  std::string scalar;
  std::vector<std::string> list;
};

// Bytes without a meaning in a template.
const Values kStandIns = {"\1", {"\2", "\3"}};

const std::shared_ptr<InputSpec>& GetInputSpec() {
  static const std::shared_ptr<InputSpec> spec = [] {
    auto made = InputSpec::New();
    made->AddParameter(ParameterSpec::New("aa", ParameterType::String));
    made->AddParameter(ParameterSpec::New("ff", ParameterType::Flag));
    made->AddParameter(ParameterSpec::New("li", ParameterType::StringList));
    made->AddParameter(ParameterSpec::New("zz", ParameterType::String));  // never given
    return made;
  }();
  return spec;
}

// Returns the filled template; nothing when a marker does not fit the type of its parameter.
std::optional<std::string> Fill(const std::string& text, const Values& values, bool forStdin) {
  const std::shared_ptr<ExtensionCommand> command = ExtensionCommand::New();
  command->SetInputSpec(GetInputSpec());
  command->SetExecuteCommand(text);
  command->SetStdin(text);
  const std::shared_ptr<Input> input = Input::New();
  input->SetInputSpec(GetInputSpec());
  input->AddParameter("aa", values.scalar);
  input->AddParameter("ff", "");
  input->AddParameter("li", values.list);
  try {
    return command->SubstituteInput(input, forStdin);
  } catch (const KestrelException&) {
    return std::nullopt;
  }
}

bool HasAnyOf(const Values& values, const char* bytes) {
  return (values.scalar + values.list[0] + values.list[1]).find_first_of(bytes) != kNone;
}

// Whether a value may become empty when it loses its NUL bytes and quotes.
bool MayVanish(const std::string& value) {
  constexpr std::string_view kLost("\0'\"", 3);
  return value.find_first_not_of(kLost) == kNone;
}

bool MayVanish(const Values& values) {
  return MayVanish(values.scalar) || MayVanish(values.list[0]) || MayVanish(values.list[1]);
}

// Returns the end of the part of a marker, starting at `dollar`, in which an inserted value could
// complete the marker. For a conditional, this part ends after the name.
std::size_t FindMarkerEnd(std::string_view text, std::size_t dollar) {
  std::size_t end = dollar + 1;
  while (end < text.size() && std::isalpha(static_cast<unsigned char>(text[end])) != 0) {
    ++end;
  }
  if (end == text.size() || text[end] != '{') {
    return end;
  }
  const std::string_view kind = text.substr(dollar, end - dollar);
  if (kind == "$if") {
    return text.find_first_of(",}", end);
  }
  if (kind == "$multilist") {
    // After the name and at least one byte of the prefix.
    const std::size_t begin = std::min(text.find(',', end), text.size() - 1) + 2;
    return std::min(text.find(",true}", begin), text.find(",false}", begin));
  }
  return text.find('}', end);
}

// Whether values are inserted only outside of markers or into the text of a conditional. Elsewhere
// a value may complete a marker of the template, as the documentation says.
bool KeepsValuesApart(std::string_view text) {
  for (std::size_t dollar = text.find('$'); dollar != kNone;) {
    const std::size_t next = text.find('$', dollar + 1);
    if (next != kNone && next <= FindMarkerEnd(text, dollar)) {
      return false;
    }
    dollar = next;
  }
  return true;
}

// Whether the values cannot change how the rest of the template is read. In a template with
// conditionals, a brace in a value may end the text of a conditional, a "$" may be the last
// character before a block, and an empty value may leave a conditional without text, so that it no
// longer is one.
bool IsOnlyText(const std::string& text, const Values& values) {
  return text.find_first_of("\1\2\3") == kNone && KeepsValuesApart(text) &&
         (text.find("$if") == kNone || !(HasAnyOf(values, "{}$") || MayVanish(values)));
}

std::string Escaped(const std::string& value) {
  std::string escaped;
  for (const char c : value) {
    escaped += std::string_view("\n!\"$&'()*;<>\\^`|").find(c) == kNone ? "" : "\\";
    escaped += c;
  }
  return escaped;
}

std::string Without(std::string value, char c) {
  value.erase(std::remove(value.begin(), value.end(), c), value.end());
  return value;
}

// Returns the ways to write a value. On a command line, it loses its NUL bytes, and either is
// escaped or loses all quotes of the kind that encloses it.
std::vector<std::string> WaysToWrite(const std::string& value, std::string_view quotes,
                                     bool forStdin) {
  if (forStdin) {
    return {value};
  }
  const std::string carried = Without(value, '\0');
  std::vector<std::string> ways = {Escaped(carried)};
  for (const char quote : quotes) {
    ways.push_back(Without(carried, quote));
  }
  return ways;
}

std::vector<std::string> WaysToWrite(char standIn, const Values& values, bool forStdin) {
  switch (standIn) {
    case '\1':
      // Double quotes enclose the value where a marker for lists treats it as a list of one value.
      return WaysToWrite(values.scalar, "'\"", forStdin);
    case '\2':
    case '\3':
      return WaysToWrite(values.list[standIn == '\2' ? 0 : 1], "\"", forStdin);
    default:
      return {std::string(1, standIn)};
  }
}

// Whether `text` is `pattern` with each placeholder replaced by its value, written in one of its
// ways.
bool Matches(std::string_view text, std::string_view pattern, const Values& values, bool forStdin) {
  std::set<std::size_t> ends = {0};
  for (const char c : pattern) {
    std::set<std::size_t> next;
    for (const std::string& written : WaysToWrite(c, values, forStdin)) {
      for (const std::size_t end : ends) {
        if (text.substr(end, written.size()) == written) {
          next.insert(end + written.size());
        }
      }
    }
    ends = std::move(next);
  }
  return ends.count(text.size()) != 0;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  if (size > kMaxInput) {
    return 0;
  }
  FuzzInput input(data, size);
  Values values;
  values.scalar = input.TakeText();
  values.list = {input.TakeText(), input.TakeText()};
  const std::string text = input.TakeRest();

  for (const bool forStdin : {false, true}) {
    const Usage usage(size);
    const std::optional<std::string> filled = Fill(text, values, forStdin);
    usage.Check(size * size);  // a marker in the prefix of another multiplies the result
    if (text.find('$') == std::string::npos) {
      Require(filled == text, "a template without a marker is unchanged");
    }
    if (!IsOnlyText(text, values)) {
      continue;
    }
    const std::optional<std::string> pattern = Fill(text, kStandIns, forStdin);
    Require(filled.has_value() == pattern.has_value(),
            "whether a marker fits does not depend on a value");
    Require(!filled || Matches(*filled, *pattern, values, forStdin), "a value is only text");
  }
  return 0;
}

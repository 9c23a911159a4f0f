// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: a list; the kind of a value (i, b or s) followed by the value; a printf format; units.
// Each is on a line of its own.
//
// Joining the pieces of the list yields the list again, apart from an empty last piece. The
// formatted value has a bounded size and equals the output of the system's printf, unless the
// format is refused or cannot be compared (see `IsComparable`).

#include "kestrel/autocli/FormatParameters.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzInput.h"
#include "Printed.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/autocli/Util.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::AutoCli_FormatField;
using AutoCli::FormatParameters;
using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaString;
using MetaObj::MetaType;

void RequireListReadsBack(const std::string& text) {
  FormatParameters params;
  params.SetParameter("fields:Type", text);
  std::string joined;
  bool isFirst = true;
  for (const std::string& piece : params.GetParameterAsList("fields:Type")) {
    Require(piece.find(',') == std::string::npos, "no piece of a list contains a comma");
    joined += isFirst ? piece : "," + piece;
    isFirst = false;
  }
  // The library drops an empty last piece.
  Require(joined == text || joined + "," == text, "joining the pieces of a list yields the list");
}

Value MakeValue(const std::string& text) {
  const std::string rest = text.empty() ? text : text.substr(1);
  switch (text.empty() ? 's' : text[0]) {
    case 'i':
      return MetaInt::New(std::strtol(rest.c_str(), nullptr, 10));
    case 'b':
      return MetaBool::New(!rest.empty());
    default:
      return MetaString::New(rest);
  }
}

// Excludes formats that take the system's printf too long, and formats that refer to the argument
// more than once, because printf then uses the type of the last reference for all.
bool IsComparable(std::string_view format) {
  int digits = 0;
  for (const char c : format) {
    digits = c >= '0' && c <= '9' ? digits + 1 : 0;
    if (digits > 4) {
      return false;
    }
  }
  return format.find("1$") == format.rfind("1$");
}

std::string PrintWithSystem(const std::string& format, const MetaObj::MetaObject& value) {
  std::string buffer(format.size() + value.ToString().size() + 65, '\0');
  errno = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"  // The library has accepted the format.
  if (const auto* text = dynamic_cast<const MetaString*>(&value)) {
    std::snprintf(&buffer[0], buffer.size(), format.c_str(), text->GetValue().c_str());
  } else if (const auto* number = dynamic_cast<const MetaInt*>(&value)) {
    std::snprintf(&buffer[0], buffer.size(), format.c_str(), number->GetValue());
  } else if (const auto* boolean = dynamic_cast<const MetaBool*>(&value)) {
    std::snprintf(&buffer[0], buffer.size(), format.c_str(), boolean->GetValue() ? 1L : 0L);
  }
#pragma GCC diagnostic pop
  return buffer.c_str();
}

void RequireFormatsField(const Value& value, const std::string& format, const std::string& units) {
  FormatParameters params;
  params.SetParameter("printf:Type.Field", format);
  errno = 0;
  const Usage usage(format.size() + value->ToString().size());
  const std::string text = AutoCli_FormatField("Type", "Field", value, params);
  usage.Check(text.size());
  constexpr std::string_view kError =
      "Error while handling formatting parameter printf:Type.Field.  Unable to format field: ";
  const bool isRefused = text.compare(0, kError.size(), kError) == 0;
  const std::size_t limit =
      isRefused ? kError.size() + 255 : format.size() + value->ToString().size() + 64;
  Require(text.size() <= limit, "the size of a formatted value is bounded");
  if (!isRefused && IsComparable(format)) {
    RequireEqual(text, PrintWithSystem(format, *value), "a value is formatted as printf does");
  }

  params.SetParameter("units:Type.Field", units);
  errno = 0;
  RequireEqual(AutoCli_FormatField("Type", "Field", value, params),
               isRefused ? text : text + " " + units, "units follow a value but not an error");
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  FuzzInput input(data, size);
  RequireListReadsBack(input.TakeText());
  const Value value = MakeValue(input.TakeText());
  const std::string format = input.TakeText();
  RequireFormatsField(value, format, input.TakeText());
  return 0;
}

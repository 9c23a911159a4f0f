// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/PythonFormatter.h"

#include <algorithm>
#include <string_view>

#include "autocli/formatters/DocumentPrinter.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/text/EscapeTable.h"
#include "autocli/text/TextWriter.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

// Everything is on one line, so the output does not depend on the level.
constexpr long kLevel = 0;

// No other bytes are escaped: programs that read this output rely on them being unchanged.
constexpr EscapeTable kPythonEscapes = EscapeTable().Set('"', "\\\"").Set('\n', "\\n");

class PythonPrinter : public DocumentPrinter<PythonPrinter> {
 public:
  static constexpr long kFieldStep = 0;
  static constexpr long kElementStep = 0;

  // Names are not escaped.
  static std::string FieldPrefix(const std::string& name, bool isFirst, long /*level*/) {
    return (isFirst ? "\"" : ", \"") + name + "\": ";
  }

  explicit PythonPrinter(TextWriter& out) : DocumentPrinter(out) {}

  void Bool(std::string_view before, bool value, long /*level*/) {
    out_.AppendAll(before, std::string_view(value ? "True" : "False"));
  }
  void Int(std::string_view before, long value, long /*level*/) {
    out_.AppendAll(before, Decimal{value});
  }
  void String(std::string_view before, const std::string& value, long /*level*/) {
    out_.AppendAll(before, "\"\"\"", Escaped{value, kPythonEscapes}, "\"\"\"");
  }
  void Misread(std::string_view before, const MetaObject* value) {
    out_.Append(before);
    if (value == nullptr) {
      throw KestrelException("Invalid MetaObject passed to Format in PythonFormatter");
    }
    out_.AppendAll(MisreadText(value, "Unknown data type"), '\n');
  }

  void BeginStruct(std::string_view before, const MetaStruct& /*structure*/, long /*level*/) {
    out_.AppendAll(before, '{');
  }
  void EndStruct(bool isEmpty, long /*level*/) {
    out_.Append(std::string_view(isEmpty ? "}" : ", }"));
  }

  void BeginList(std::string_view before, const MetaList& /*list*/, long /*level*/) {
    out_.AppendAll(before, '[');
  }
  void BeginElement(bool isFirst, long /*level*/) {
    out_.Append(std::string_view(isFirst ? "" : ", "));
  }
  void EndList(bool isEmpty, long /*level*/) {
    out_.Append(std::string_view(isEmpty ? "]" : ", ]"));
  }
};

}  // namespace

PythonFormatter::PythonFormatter() : Formatter("python") {
  description = "Print the output as Python syntax suitable for eval().";
}

PythonFormatter::~PythonFormatter() = default;

void PythonFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                             FormatParameters& /*parameters*/, DisplayContext& /*display*/,
                             std::ostream& out) {
  TextWriter writer(out);
  PythonPrinter::Print(output->GetRootObject().get(), writer, kLevel);
  writer.Append('\n');
  writer.Finish();
}

void PythonFormatter::Format(std::shared_ptr<MetaObject> value, std::ostream& out, int /*level*/) {
  TextWriter writer(out);
  PythonPrinter::Print(value.get(), writer, kLevel);
  writer.Finish();
}

bool PythonFormatter::IsAllAscii(const std::string& text) {
  return std::none_of(text.begin(), text.end(), [](char byte) { return (byte & 0x80) != 0; });
}

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/JsonFormatter.h"

#include <string_view>

#include "autocli/formatters/DocumentPrinter.h"
#include "autocli/formatters/Indent.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/text/EscapeTable.h"
#include "autocli/text/TextWriter.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

constexpr long kRootLevel = -1;

constexpr EscapeTable MakeJsonEscapes() {
  constexpr char kDigits[] = "0123456789abcdef";
  EscapeTable table;
  for (int byte = 0; byte < 256; ++byte) {
    // Each byte of a multi-byte character is escaped too, because readers rely on it.
    if (byte < 32 || byte >= 127) {
      const char text[] = {'\\', 'u', '0', '0', kDigits[byte / 16], kDigits[byte % 16], '\0'};
      table.Set(static_cast<unsigned char>(byte), text);
    }
  }
  return table.Set('"', "\\\"")
      .Set('\\', "\\\\")
      .Set('/', "\\/")
      .Set('\b', "\\b")
      .Set('\t', "\\t")
      .Set('\n', "\\n")
      .Set('\f', "\\f")
      .Set('\r', "\\r");
}

constexpr EscapeTable kJsonEscapes = MakeJsonEscapes();

class JsonPrinter : public DocumentPrinter<JsonPrinter> {
 public:
  static constexpr long kFieldStep = 2;
  static constexpr long kElementStep = 3;

  // Names are not escaped.
  static std::string FieldPrefix(const std::string& name, bool isFirst, long level) {
    return (isFirst ? "" : ",\n") + std::string(IndentOf(level) + kIndentStep, ' ') + '"' + name +
           "\": ";
  }

  explicit JsonPrinter(TextWriter& out) : DocumentPrinter(out) {}

  void Bool(std::string_view before, bool value, long /*level*/) {
    out_.AppendAll(before, std::string_view(value ? "true" : "false"));
  }
  void Int(std::string_view before, long value, long /*level*/) {
    out_.AppendAll(before, Decimal{value});
  }
  void String(std::string_view before, const std::string& value, long /*level*/) {
    out_.AppendAll(before, '"', Escaped{value, kJsonEscapes}, '"');
  }
  void Misread(std::string_view before, const MetaObject* value) {
    out_.AppendAll(before, MisreadText(value, "Unknown data type"), '\n');
  }

  void BeginStruct(std::string_view before, const MetaStruct& /*structure*/, long level) {
    Open(before, level, '{');
  }
  void EndStruct(bool isEmpty, long level) { Close(isEmpty, level, '}'); }

  void BeginList(std::string_view before, const MetaList& /*list*/, long level) {
    Open(before, level, '[');
  }
  void BeginElement(bool isFirst, long level) {
    out_.AppendAll(std::string_view(isFirst ? "" : ", \n"), Spaces{IndentOf(level)});
  }
  void EndList(bool isEmpty, long level) { Close(isEmpty, level, ']'); }

 private:
  void Open(std::string_view before, long level, char bracket) {
    out_.AppendAll(before, '\n', Spaces{IndentOf(level)}, bracket, '\n');
  }

  void Close(bool isEmpty, long level, char bracket) {
    out_.AppendAll(std::string_view(isEmpty ? "" : "\n"), Spaces{IndentOf(level)}, bracket);
  }
};

}  // namespace

JsonFormatter::JsonFormatter() : Formatter("json") { description = "Print the output as JSON."; }

JsonFormatter::~JsonFormatter() = default;

void JsonFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                           FormatParameters& /*parameters*/, DisplayContext& /*display*/,
                           std::ostream& out) {
  TextWriter writer(out);
  JsonPrinter::Print(output->GetRootObject().get(), writer, kRootLevel);
  writer.Append('\n');
  writer.Finish();
}

void JsonFormatter::Format(std::shared_ptr<MetaObject> value, std::ostream& out, int level) {
  TextWriter writer(out);
  JsonPrinter::Print(value.get(), writer, level);
  writer.Finish();
}

}  // namespace Kestrel::AutoCli

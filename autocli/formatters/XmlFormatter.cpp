// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlFormatter.h"

#include <cstddef>
#include <string>
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
using MetaObj::MetaType;

namespace {

constexpr std::string_view kNamespaceUri = "urn:norvane:vexil:output:1.0";
constexpr std::string_view kUnsupportedText =
    "Error Only simple int, bool, string and struct output supported";
constexpr long kRootLevel = 2;

constexpr EscapeTable kXmlEscapes = EscapeTable()
                                        .Set('&', "&amp;")
                                        .Set('<', "&lt;")
                                        .Set('>', "&gt;")
                                        .Set('%', "&#37;")
                                        .Set('"', "&quot;")
                                        .Set('\'', "&apos;");

// Returns the value of the attribute "type". In the value documents that commands print, the words
// for integers and booleans are "int" and "bool".
std::string_view ListTypeWord(MetaType kind) {
  switch (kind) {
    case MetaType::Bool:
      return "boolean";
    case MetaType::Int:
      return "integer";
    case MetaType::String:
      return "string";
    case MetaType::Struct:
      return "structure";
    case MetaType::List:
      return "list";
  }
  return "";
}

class XmlPrinter : public DocumentPrinter<XmlPrinter> {
 public:
  static constexpr long kFieldStep = 2;
  static constexpr long kElementStep = 2;

  static std::string FieldPrefix(const std::string& name, bool isFirst, long level) {
    const std::string indent(IndentOf(level) + kIndentStep, ' ');
    const std::string start = indent + "<field name=\"" + SantizeString(name) + "\">\n";
    return isFirst ? start : indent + "</field>\n" + start;
  }

  explicit XmlPrinter(TextWriter& out) : DocumentPrinter(out) {}

  void Bool(std::string_view before, bool value, long level) {
    out_.AppendAll(
        before, Spaces{IndentOf(level)},
        std::string_view(value ? "<boolean>true</boolean>\n" : "<boolean>false</boolean>\n"));
  }

  void Int(std::string_view before, long value, long level) {
    out_.AppendAll(before, Spaces{IndentOf(level)}, "<integer>", Decimal{value}, "</integer>\n");
  }

  void String(std::string_view before, const std::string& value, long level) {
    out_.AppendAll(before, Spaces{IndentOf(level)}, "<string>", Escaped{value, kXmlEscapes},
                   "</string>\n");
  }

  void Misread(std::string_view before, const MetaObject* value) {
    // Only the message about a boolean is an XML comment. Scripts match the messages as they are.
    const bool isBool = value != nullptr && value->GetType() == MetaType::Bool;
    out_.AppendAll(before,
                   isBool ? "<!-- Error reading a bool -->" : MisreadText(value, kUnsupportedText),
                   '\n');
  }

  void BeginStruct(std::string_view before, const MetaStruct& structure, long level) {
    out_.AppendAll(before, Spaces{IndentOf(level)}, "<structure typeName=\"",
                   Escaped{structure.GetTypeName(), kXmlEscapes}, "\">\n");
  }

  void EndStruct(bool isEmpty, long level) {
    if (!isEmpty) {
      out_.AppendAll(Spaces{IndentOf(level) + kIndentStep}, "</field>\n");
    }
    out_.AppendAll(Spaces{IndentOf(level)}, "</structure>\n");
  }

  void BeginList(std::string_view before, const MetaList& list, long level) {
    out_.AppendAll(before, Spaces{IndentOf(level)}, "<list type=\"",
                   ListTypeWord(list.GetListType()), "\">\n");
  }

  void BeginElement(bool /*isFirst*/, long /*level*/) {}
  void EndList(bool /*isEmpty*/, long level) {
    out_.AppendAll(Spaces{IndentOf(level)}, "</list>\n");
  }
};

void PrintMetaData(const FormatParameters& params, TextWriter& out) {
  out.Append("   <meta-data>\n");
  for (const auto& [key, value] : params.GetParameters()) {
    out.AppendAll("      <meta-data-field name=\"", Escaped{key, kXmlEscapes}, "\" value=\"",
                  Escaped{value, kXmlEscapes}, "\"/>\n");
  }
  out.Append("   </meta-data>\n");
}

}  // namespace

XmlFormatter::XmlFormatter() : Formatter("xml") {
  description = "Print an XML document to the screen representing the output for a given command";
  params.push_back(
      {"stylesheet", "The file name or URL to a stylesheet for this document.  ", false});
}

XmlFormatter::~XmlFormatter() = default;

void XmlFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                          FormatParameters& parameters, DisplayContext& /*display*/,
                          std::ostream& out) {
  TextWriter writer(out);
  writer.Append("<?xml version=\"1.0\"?>\n");
  if (parameters.HasParameter("stylesheet")) {
    // Not escaped: the user is responsible for its characters.
    writer.AppendAll("<?xml-stylesheet type=\"text/xsl\" href=\"",
                     parameters.GetParameter("stylesheet"), "\"?>\n");
  }
  writer.AppendAll("<output xmlns:vexil=\"", kNamespaceUri, "\">\n");
  PrintMetaData(parameters, writer);
  writer.Append("   <root>\n");
  XmlPrinter::Print(output->GetRootObject().get(), writer, kRootLevel);
  writer.Append("   </root>\n</output>\n");
  writer.Finish();
}

void XmlFormatter::Format(std::shared_ptr<MetaObject> value, std::ostream& out, int level) {
  TextWriter writer(out);
  XmlPrinter::Print(value.get(), writer, level);
  writer.Finish();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): plug-ins rely on the signature.
std::string SantizeString(std::string text) {
  std::string safe(kXmlEscapes.Measure(text) + EscapeTable::kMaxLength, '\0');
  const char* const end = kXmlEscapes.Escape(text, safe.data());
  safe.resize(static_cast<std::size_t>(end - safe.data()));
  return safe;
}

}  // namespace Kestrel::AutoCli

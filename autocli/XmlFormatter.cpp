#include "kestrel/autocli/XmlFormatter.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/EscapeTable.h"
#include "autocli/Indent.h"
#include "autocli/TextWriter.h"
#include "autocli/ValueView.h"
#include "autocli/ValueWalk.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr std::string_view kNamespaceUri = "urn:norvane:vexil:output:1.0";
constexpr long kRootLevel = 2;

constexpr EscapeTable kXmlEscapes = EscapeTable()
                                        .Set('&', "&amp;")
                                        .Set('<', "&lt;")
                                        .Set('>', "&gt;")
                                        .Set('%', "&#37;")
                                        .Set('"', "&quot;")
                                        .Set('\'', "&apos;");

// The word of a list's start tag; other words name the same kinds in the documents that commands
// give to the library.
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

class XmlPrinter {
 public:
  static constexpr long kFieldStep = 2;
  static constexpr long kElementStep = 2;

  static std::string FieldPrefix(const std::string& name, bool isFirst, long level) {
    const std::string indent(IndentOf(level) + kIndentStep, ' ');
    const std::string start = indent + "<field name=\"" + SantizeString(name) + "\">\n";
    return isFirst ? start : indent + "</field>\n" + start;
  }

  explicit XmlPrinter(TextWriter& out) : out_(out) {}

  void Bool(bool value, long level) {
    PrintLine(level, value ? "<boolean>true</boolean>" : "<boolean>false</boolean>");
  }

  void Int(long value, long level) {
    Begin(level, "<integer>");
    out_.AppendInt(value);
    out_.Append("</integer>\n");
  }

  void String(const std::string& value, long level) {
    Begin(level, "<string>");
    out_.AppendEscaped(value, kXmlEscapes);
    out_.Append("</string>\n");
  }

  void Misread(const MetaObject* value) {
    if (value != nullptr && value->GetType() == MetaType::Bool) {
      // A comment, as no other of these texts: scripts match them.
      return PrintLine(0, "<!-- Error reading a bool -->");
    }
    PrintLine(
        0, MisreadText(value, "Error Only simple int, bool, string and struct output supported"));
  }

  void BeginStruct(const MetaStruct& record, long level) {
    Begin(level, "<structure typeName=\"");
    out_.AppendEscaped(record.GetTypeName(), kXmlEscapes);
    out_.Append("\">\n");
  }

  void EndStruct(bool isEmpty, long level) {
    if (!isEmpty) {
      out_.Repeat(' ', IndentOf(level) + kIndentStep);
      out_.Append("</field>\n");
    }
    PrintLine(level, "</structure>");
  }

  void BeginList(const MetaList& list, long level) {
    Begin(level, "<list type=\"");
    out_.Append(ListTypeWord(list.GetListType()));
    out_.Append("\">\n");
  }

  void BeginElement(bool /*isFirst*/, long /*level*/) {}
  void EndList(bool /*isEmpty*/, long level) { PrintLine(level, "</list>"); }

 private:
  void Begin(long level, std::string_view text) {
    out_.Repeat(' ', IndentOf(level));
    out_.Append(text);
  }

  void PrintLine(long level, std::string_view text) {
    Begin(level, text);
    out_.Append('\n');
  }

  TextWriter& out_;
};

void Print(const MetaObject* value, TextWriter& out, long level) {
  XmlPrinter printer(out);
  ValueWalk<XmlPrinter>(printer, out).Run(value, level);
}

void PrintMetaData(const FormatParameters& params, TextWriter& out) {
  out.Append("   <meta-data>\n");
  for (const auto& [key, value] : params.GetParameters()) {
    out.Append("      <meta-data-field name=\"");
    out.AppendEscaped(key, kXmlEscapes);
    out.Append("\" value=\"");
    out.AppendEscaped(value, kXmlEscapes);
    out.Append("\"/>\n");
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
    // Written as it is: whoever names the stylesheet answers for its characters.
    writer.Append("<?xml-stylesheet type=\"text/xsl\" href=\"");
    writer.Append(parameters.GetParameter("stylesheet"));
    writer.Append("\"?>\n");
  }
  writer.Append("<output xmlns:vexil=\"");
  writer.Append(kNamespaceUri);
  writer.Append("\">\n");
  PrintMetaData(parameters, writer);
  writer.Append("   <root>\n");
  Print(output->GetRootObject().get(), writer, kRootLevel);
  writer.Append("   </root>\n</output>\n");
  writer.Finish();
}

void XmlFormatter::Format(std::shared_ptr<MetaObject> value, std::ostream& out, int level) {
  TextWriter writer(out);
  Print(value.get(), writer, level);
  writer.Finish();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is plug-ins' to rely on.
std::string SantizeString(std::string text) {
  std::string safe(kXmlEscapes.Measure(text) + EscapeTable::kMaxLength, '\0');
  const char* const end = kXmlEscapes.Escape(text, safe.data());
  safe.resize(static_cast<std::size_t>(end - safe.data()));
  return safe;
}

}  // namespace Kestrel::AutoCli

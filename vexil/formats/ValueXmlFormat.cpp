// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

#include "kestrel/autocli/XmlUtil.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/EscapedText.h"
#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/Utf8.h"
#include "vexil/formats/ValuePrinter.h"

// The format "value-xml": the documents in which commands from descriptors return their results.
// The tool reads such a document back as the value that was printed, with the same strings. Line
// ends that readers of XML would change are escaped; characters that XML 1.0 cannot represent are
// rejected.

namespace Kestrel::Formats {

namespace {

constexpr std::size_t kIndentStep = 3;  // as in the formatters of the library

// The limits of the reader. The depth is the number of elements that contain others, from the root
// down.
constexpr long kMaxDepth = 256;
constexpr std::size_t kMaxTextSize = 10000000;

void CheckSize(const std::string& text) {
  if (text.size() > kMaxTextSize) {
    throw ValueFault{"is longer than a value document allows"};
  }
}

[[noreturn]] void Reject(char32_t character) {
  throw ValueFault{
      Concat({"contains U+", Hex(character, 4, kUpperDigits), ", which XML does not allow"})};
}

// The content of an element.
struct Content {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return ((bytes < 0x20) & (bytes != '\t') & (bytes != '\n')) | (bytes == '&') | (bytes == '<') |
           (bytes == '>');
  }
  static bool IsCopied(char32_t character) { return character != 0xfffe && character != 0xffff; }
  static void Replace(char32_t character, TextBuffer& out) {
    switch (character) {
      case '&':
        return out.Append("&amp;");
      case '<':
        return out.Append("&lt;");
      case '>':
        return out.Append("&gt;");
      case '\r':
        return out.Append("&#13;");
      default:
        Reject(character);
    }
  }
};

// The value of an attribute. Tabs and line feeds are escaped, because readers replace them by
// spaces.
struct Attribute {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes < 0x20) | (bytes == '&') | (bytes == '<') | (bytes == '>') | (bytes == '"');
  }
  static bool IsCopied(char32_t character) { return Content::IsCopied(character); }
  static void Replace(char32_t character, TextBuffer& out) {
    switch (character) {
      case '"':
        return out.Append("&quot;");
      case '\t':
        return out.Append("&#9;");
      case '\n':
        return out.Append("&#10;");
      default:
        Content::Replace(character, out);
    }
  }
};

std::string_view TypeWord(MetaObj::MetaType kind) {
  switch (kind) {
    case MetaObj::MetaType::Int:
      return "int";
    case MetaObj::MetaType::Bool:
      return "bool";
    case MetaObj::MetaType::String:
      return "string";
    default:
      return "structure";
  }
}

std::size_t IndentOf(long level) { return kIndentStep * static_cast<std::size_t>(level + 1); }

class ValueXmlSyntax {
 public:
  static std::string FieldPrefix(const std::string& name, bool isFirst, StructPlace place) {
    if (name.empty()) {
      throw ValueFault{"is empty, which a value document does not allow"};
    }
    CheckSize(name);
    TextBuffer prefix;
    prefix.AppendAll(std::string_view(isFirst ? "" : "</field>"), '\n',
                     Spaces{IndentOf(place.level + 1)}, std::string_view("<field name=\""));
    AppendEscaped<Attribute>(name, prefix);
    prefix.Append("\">");
    return prefix.ToString();
  }

  explicit ValueXmlSyntax(TextBuffer& out) : out_(out) {}

  TextBuffer& Out() { return out_; }

  char* Bool(std::string_view before, bool value, char* place) {
    place = PutPiece(before, place);
    return value ? PutPiece("<bool>true</bool>", place) : PutPiece("<bool>false</bool>", place);
  }
  char* Int(std::string_view before, long value, char* place) {
    place = PutPiece("<int>", PutPiece(before, place));
    return PutPiece("</int>", PutPiece(Decimal{value}, place));
  }
  char* String(std::string_view before, const std::string& value, char* place) {
    char* const begin = PutPiece(kBeginString, PutPiece(before, place));
    const bool isPut = value.size() <= kMaxShort && CopyOrdinary<Content>(value, begin);
    return isPut ? PutPiece(kEndString, begin + value.size()) : nullptr;
  }
  void OtherString(std::string_view before, const std::string& value) {
    CheckSize(value);
    out_.AppendAll(before, kBeginString);
    AppendEscaped<Content>(value, out_);
    out_.Append(kEndString);
  }

  void BeginStruct(std::string_view before, const MetaObj::MetaStruct& structure,
                   bool /*isEmpty*/) {
    Enter(kStructDepth);
    out_.AppendAll(before, std::string_view("<structure typeName=\""),
                   std::string_view(structure.GetTypeName()), std::string_view("\">"));
  }
  void EndStruct(bool isEmpty, long level) {
    Close(isEmpty ? "" : "</field>", isEmpty, level);
    out_.Append("</structure>");
    depth_ -= kStructDepth;
  }

  void BeginList(std::string_view before, const MetaObj::MetaList& list, bool /*isEmpty*/) {
    Enter(kListDepth);
    out_.AppendAll(before, std::string_view("<list type=\""), TypeWord(list.GetListType()),
                   std::string_view("\">"));
  }
  void BeginElement(bool /*isFirst*/, long level) {
    out_.AppendAll('\n', Spaces{IndentOf(level + 1)});
  }
  void EndList(bool isEmpty, long level) {
    Close("", isEmpty, level);
    out_.Append("</list>");
    depth_ -= kListDepth;
  }

 private:
  static constexpr std::string_view kBeginString = "<string>";
  static constexpr std::string_view kEndString = "</string>";

  static constexpr long kStructDepth = 2;  // the elements structure and field
  static constexpr long kListDepth = 1;

  /// Checks that another nested value is allowed.
  void Enter(long depth) {
    depth_ += depth;
    if (depth_ >= kMaxDepth) {
      throw ValueFault{"is nested more deeply than a value document allows"};
    }
  }

  void Close(std::string_view lastEnd, bool isEmpty, long level) {
    out_.Append(lastEnd);
    if (!isEmpty) {
      out_.AppendAll('\n', Spaces{IndentOf(level)});
    }
  }

  TextBuffer& out_;
  long depth_ = 1;  // the element `output`
};

// Whether the reader accepts the document: it requires all elements of a list to have the shape of
// the first one.
bool IsReadBack(const std::string& document) {
  try {
    return AutoCli::XmlUtil_ParseXmlOutput(document) != nullptr;
  } catch (const std::exception&) {
    return false;
  }
}

void Print(const Selection& selection, const FormatOptions& /*options*/, TextBuffer& out) {
  out.Append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<output>\n");
  out.Append(Spaces{IndentOf(0)});
  ValueXmlSyntax syntax(out);
  ValuePrinter<ValueXmlSyntax> printer(syntax);
  printer.PrintResult(selection);
  out.Append("\n</output>\n");
  if (printer.HasMixedShapes() && !IsReadBack(out.ToString())) {
    throw ResultFault{
        "The result has lists of different structures in one field, which a value document does "
        "not "
        "allow"};
  }
}

}  // namespace

const ExactFormat kValueXmlFormat = {
    "value-xml",
    "Print an XML document in the form in which commands return results.",
    true,
    {},
    Print};

}  // namespace Kestrel::Formats

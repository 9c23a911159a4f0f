// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A stack of open elements follows the parser's events; every value is complete when its element
// ends, and is handed to the element around it. The first value in the root ends the building; the
// rest is only checked for being well-formed. What goes wrong in the building is kept back until
// the document has proved well-formed. Only a document that the parser takes without a word is read
// so: for any other the diagnostics, too, are those of a reading through a tree.

#include "autocli/descriptors/XmlValueReader.h"

#include <libxml/parserInternals.h>
#include <strings.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlValue.h"
#include "autocli/text/StartsWith.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

/// The tree refuses a text that it puts together from pieces beyond this many bytes.
constexpr std::size_t kLongestJoinedText = 10000000;

/// Keeps the parser silent and notes whether it had anything to say.
class SilencedDiagnostics {
 public:
  SilencedDiagnostics() : handler_(xmlGenericError), context_(xmlGenericErrorContext) {
    xmlSetGenericErrorFunc(this, Note);
  }
  SilencedDiagnostics(const SilencedDiagnostics&) = delete;
  SilencedDiagnostics& operator=(const SilencedDiagnostics&) = delete;
  ~SilencedDiagnostics() { xmlSetGenericErrorFunc(context_, handler_); }

  bool IsEmpty() const { return isEmpty_; }

 private:
  static void Note(void* self, const char*, ...) {
    static_cast<SilencedDiagnostics*>(self)->isEmpty_ = false;
  }

  const xmlGenericErrorFunc handler_;
  void* const context_;
  bool isEmpty_ = true;
};

/// The names that mean something, as the parser's dictionary keeps them: it hands over each name as
/// the one copy that it has of it, so that pointers are compared instead of texts.
struct Names {
  explicit Names(xmlDict* dictionary)
      : field(Find(dictionary, "field")),
        list(Find(dictionary, "list")),
        structure(Find(dictionary, "structure")),
        integer(Find(dictionary, "int")),
        boolean(Find(dictionary, "bool")),
        string(Find(dictionary, "string")),
        name(Find(dictionary, "name")),
        type(Find(dictionary, "type")),
        typeName(Find(dictionary, "typeName")),
        xml(Find(dictionary, "xml")),
        id(Find(dictionary, "id")) {}

  static const xmlChar* Find(xmlDict* dictionary, const char* text) {
    return xmlDictLookup(dictionary, AsXmlChars(text), -1);
  }

  const xmlChar* const field;
  const xmlChar* const list;
  const xmlChar* const structure;
  const xmlChar* const integer;
  const xmlChar* const boolean;
  const xmlChar* const string;
  const xmlChar* const name;
  const xmlChar* const type;
  const xmlChar* const typeName;
  const xmlChar* const xml;
  const xmlChar* const id;
};

/// The attributes of a start tag, as the parser hands them over: five entries each.
class Attributes {
 public:
  Attributes() = default;
  Attributes(const xmlChar** entries, int count) : entries_(entries), count_(count) {}

  /// Puts the value of the first attribute of that local name into `value`, or nothing.
  void Get(const xmlChar* name, std::string& value) const {
    value.clear();
    for (int i = 0; i < count_; ++i) {
      const xmlChar** entry = entries_ + 5 * i;
      if (entry[0] == name) {
        Decode(std::string_view(AsChars(entry[3]), static_cast<std::size_t>(entry[4] - entry[3])),
               value);
        return;
      }
    }
  }

  std::string Get(const xmlChar* name) const {
    std::string value;
    Get(name, value);
    return value;
  }

  /// Whether one of them names its element, which only a tree can check.
  bool HasXmlId(const Names& names) const {
    for (int i = 0; i < count_; ++i) {
      const xmlChar** entry = entries_ + 5 * i;
      if (entry[1] == names.xml && entry[0] == names.id) {
        return true;
      }
    }
    return false;
  }

 private:
  /// The parser hands a "&" over as a reference, the only one that is left in a value: a document
  /// without a type has no entities of its own.
  static void Decode(std::string_view value, std::string& decoded) {
    constexpr std::string_view kReference = "#38;";
    for (std::size_t end = value.find('&'); end != std::string_view::npos; end = value.find('&')) {
      decoded.append(value.substr(0, end + 1));
      value.remove_prefix(std::min(end + 1 + kReference.size(), value.size()));
    }
    decoded.append(value);
  }

  const xmlChar** entries_ = nullptr;
  int count_ = 0;
};

/// One open element that holds values. Its object serves the next element of the same depth, too.
struct OpenElement {
  enum class Kind { Root, Field, Structure, List };

  Kind kind = Kind::Root;
  bool hasValue = false;  // a field's
  std::string name;       // a field's
  std::shared_ptr<MetaStruct> record;
  std::optional<XmlListBuilder> list;
};

class XmlValueReader {
 public:
  explicit XmlValueReader(xmlDict* dictionary) : names_(dictionary) {}

  void StartElement(const xmlChar* name, const Attributes& attributes) {
    last_ = LastNode::None;
    if (attributes.HasXmlId(names_)) {
      needsTree_ = true;
    }
    if (done_) {
      return;
    }
    if (ignoredDepth_ > 0 || scalar_.has_value()) {
      ++ignoredDepth_;
      return;
    }
    if (depth_ == 0) {
      Open(OpenElement::Kind::Root);
      return;
    }
    StartInside(Innermost(), name, attributes);
  }

  void EndElement() {
    last_ = LastNode::Other;
    if (done_) {
      return;
    }
    if (ignoredDepth_ > 0) {
      --ignoredDepth_;
      return;
    }
    EndOpen();
  }

  void Text(const char* text, std::size_t length) { Join(LastNode::Text, text, length); }
  void CData(const char* text, std::size_t length) { Join(LastNode::CData, text, length); }

  void Comment(const char* text) {
    last_ = LastNode::Other;
    if (TakesContent()) {
      content_ = text;
    }
  }

  /// `data` is null where the instruction has none.
  void ProcessingInstruction(const xmlChar* target, const char* data) {
    last_ = LastNode::Other;
    if (TakesContent()) {
      if (data != nullptr) {
        content_ = data;
      }
      return;
    }
    if (done_ || ignoredDepth_ > 0 || depth_ == 0 || !AwaitsValue(Innermost())) {
      return;
    }
    StartValue(target, Attributes());
    EndOpen();
  }

  /// Nothing more is built, whatever comes.
  void Stop() { done_ = true; }

  bool NeedsTree() const { return needsTree_; }
  const std::shared_ptr<MetaObject>& GetValue() const { return value_; }

 private:
  enum class LastNode { None, Text, CData, Other };

  static bool AwaitsValue(const OpenElement& element) {
    switch (element.kind) {
      case OpenElement::Kind::Root:
      case OpenElement::Kind::List:
        return true;
      case OpenElement::Kind::Field:
        return !element.hasValue;
      default:
        return false;
    }
  }

  OpenElement& Innermost() { return open_[depth_ - 1]; }

  OpenElement& Open(OpenElement::Kind kind) {
    if (depth_ == open_.size()) {
      open_.emplace_back();
    }
    OpenElement& opened = open_[depth_++];
    opened.kind = kind;
    opened.hasValue = false;
    return opened;
  }

  void StartInside(const OpenElement& parent, const xmlChar* name, const Attributes& attributes) {
    if (AwaitsValue(parent)) {
      StartValue(name, attributes);
    } else if (parent.kind == OpenElement::Kind::Structure && name == names_.field) {
      StartField(attributes);
    } else {
      ignoredDepth_ = 1;
    }
  }

  void StartField(const Attributes& attributes) {
    OpenElement& field = Open(OpenElement::Kind::Field);
    attributes.Get(names_.name, field.name);
    if (field.name.empty()) {
      throw KestrelException(kFieldWithoutName);
    }
  }

  void StartValue(const xmlChar* name, const Attributes& attributes) {
    const XmlValueTag tag = FindTag(name);
    if (tag == XmlValueTag::List) {
      Open(OpenElement::Kind::List).list.emplace(attributes.Get(names_.type));
    } else if (tag == XmlValueTag::Structure) {
      Open(OpenElement::Kind::Structure).record = MetaStruct::New(attributes.Get(names_.typeName));
    } else {
      scalar_ = tag;
      content_.clear();
    }
  }

  XmlValueTag FindTag(const xmlChar* name) const {
    if (name == names_.string) {
      return XmlValueTag::String;
    }
    if (name == names_.integer) {
      return XmlValueTag::Int;
    }
    if (name == names_.boolean) {
      return XmlValueTag::Bool;
    }
    if (name == names_.structure) {
      return XmlValueTag::Structure;
    }
    return ParseXmlValueTag(AsChars(name));
  }

  void EndOpen() {
    if (scalar_.has_value()) {
      return EndScalar();
    }
    OpenElement& ended = Innermost();
    --depth_;
    switch (ended.kind) {
      case OpenElement::Kind::Root:
        done_ = true;
        return;
      case OpenElement::Kind::Field:
        return;
      case OpenElement::Kind::Structure:
        return Complete(std::move(ended.record));
      case OpenElement::Kind::List:
        return Complete(ended.list->Finish());
    }
  }

  void EndScalar() {
    const XmlValueTag tag = *scalar_;
    scalar_.reset();
    if (tag == XmlValueTag::Int) {
      Complete(MakeXmlInt(content_));
    } else if (tag == XmlValueTag::Bool) {
      Complete(MakeXmlBool(content_));
    } else {
      Complete(MakeXmlString(std::move(content_)));
    }
  }

  /// Hands a finished value to the element that it stands in.
  void Complete(const std::shared_ptr<MetaObject>& value) {
    OpenElement& parent = Innermost();
    if (parent.kind == OpenElement::Kind::List) {
      parent.list->Add(value);
    } else if (parent.kind == OpenElement::Kind::Field) {
      parent.hasValue = true;
      open_[depth_ - 2].record->SetField(parent.name, value);
    } else {
      value_ = value;
      done_ = true;
    }
  }

  /// Whether a text would become the content of a scalar now.
  bool TakesContent() const { return scalar_.has_value() && ignoredDepth_ == 0 && !done_; }

  /// Pieces that follow each other directly are one text; any other text replaces the one before.
  void Join(LastNode kind, const char* text, std::size_t length) {
    const bool continues = last_ == kind;
    joinedLength_ = continues ? joinedLength_ + length : length;
    last_ = kind;
    if (continues && joinedLength_ > kLongestJoinedText) {
      needsTree_ = true;
    }
    if (!TakesContent()) {
      return;
    }
    if (!continues) {
      content_.clear();
    }
    content_.append(text, length);
  }

  const Names names_;
  std::vector<OpenElement> open_;  // the outermost first; `depth_` of them are in use
  std::size_t depth_ = 0;
  std::optional<XmlValueTag> scalar_;  // the scalar within the innermost of them
  std::string content_;
  std::shared_ptr<MetaObject> value_;
  std::size_t joinedLength_ = 0;
  int ignoredDepth_ = 0;
  LastNode last_ = LastNode::None;
  bool done_ = false;
  bool needsTree_ = false;
};

/// What is left of a text that a parser reads.
int ReadText(void* left, char* buffer, int length) {
  auto* text = static_cast<std::string_view*>(left);
  const std::size_t count = text->copy(buffer, static_cast<std::size_t>(length));
  text->remove_prefix(count);
  return static_cast<int>(count);
}

/// A parser that takes in `text` piece by piece, else set up as `xmlReadMemory` does; null when
/// there is nothing to read.
XmlParser MakeParser(std::string_view& text) {
  XmlParser parser(text.empty() ? nullptr : xmlNewParserCtxt());
  if (parser == nullptr) {
    return parser;
  }
  xmlParserInputBuffer* buffer =
      xmlParserInputBufferCreateIO(ReadText, nullptr, &text, XML_CHAR_ENCODING_NONE);
  xmlParserInput* input = xmlNewIOInputStream(parser.get(), buffer, XML_CHAR_ENCODING_NONE);
  if (input == nullptr) {
    xmlFreeParserInputBuffer(buffer);
    return nullptr;
  }
  inputPush(parser.get(), input);
  xmlCtxtUseOptions(parser.get(), 0);
  return parser;
}

/// The parser with its events led into a reader. No exception passes through the parser's frames.
class ValueParser {
 public:
  explicit ValueParser(const std::string& text) : text_(text), parser_(MakeParser(text_)) {
    if (parser_ != nullptr) {
      reader_.emplace(parser_->dict);
      parser_->_private = this;
      LeadEventsHere(*parser_->sax);
    }
  }

  void Parse() {
    if (parser_ != nullptr) {
      xmlParseDocument(parser_.get());
    }
  }

  /// Whether the document is well-formed and what was built of it is what a tree would give.
  bool IsRead() const {
    return parser_ != nullptr && parser_->wellFormed != 0 && !reader_->NeedsTree();
  }

  /// The value of the document that was read; null when it has none.
  const std::shared_ptr<MetaObject>& GetValue() const {
    if (failure_ != nullptr) {
      std::rethrow_exception(failure_);
    }
    if (refusal_.has_value()) {
      throw UnbuildableXmlOutput(*refusal_);
    }
    return reader_->GetValue();
  }

 private:
  template <typename Event>
  static void Lead(void* parser, Event event) {
    auto* self = static_cast<ValueParser*>(static_cast<xmlParserCtxt*>(parser)->_private);
    try {
      event(*self->reader_);
    } catch (const KestrelException& error) {
      self->refusal_ = error;
      self->reader_->Stop();
    } catch (...) {
      self->failure_ = std::current_exception();
      self->reader_->Stop();
    }
    if (self->reader_->NeedsTree()) {
      xmlStopParser(self->parser_.get());
    }
  }

  static void LeadEventsHere(xmlSAXHandler& handler) {
    handler.startElementNs = [](void* parser, const xmlChar* name, const xmlChar*, const xmlChar*,
                                int, const xmlChar**, int count, int, const xmlChar** entries) {
      Lead(parser,
           [&](XmlValueReader& reader) { reader.StartElement(name, Attributes(entries, count)); });
    };
    handler.endElementNs = [](void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
      Lead(parser, [](XmlValueReader& reader) { reader.EndElement(); });
    };
    handler.characters = [](void* parser, const xmlChar* text, int length) {
      Lead(parser, [&](XmlValueReader& reader) {
        reader.Text(AsChars(text), static_cast<std::size_t>(length));
      });
    };
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = [](void* parser, const xmlChar* text, int length) {
      Lead(parser, [&](XmlValueReader& reader) {
        reader.CData(AsChars(text), static_cast<std::size_t>(length));
      });
    };
    handler.comment = [](void* parser, const xmlChar* text) {
      Lead(parser, [&](XmlValueReader& reader) { reader.Comment(AsChars(text)); });
    };
    handler.processingInstruction = [](void* parser, const xmlChar* target, const xmlChar* data) {
      Lead(parser, [&](XmlValueReader& reader) {
        reader.ProcessingInstruction(target, data == nullptr ? nullptr : AsChars(data));
      });
    };
  }

  std::string_view text_;
  XmlParser parser_;
  std::optional<XmlValueReader> reader_;
  std::optional<KestrelException> refusal_;
  std::exception_ptr failure_;
};

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view WithoutByteOrderMark(std::string_view text) {
  return StartsWith(text, kByteOrderMark) ? text.substr(kByteOrderMark.size()) : text;
}

/// The first bytes of the document, as its declaration shows them, name no encoding but UTF-8.
bool DeclaresNoOtherEncoding(std::string_view declaration) {
  std::size_t position = declaration.find("encoding");
  if (position == std::string_view::npos) {
    return true;
  }
  position = declaration.find_first_of("'\"", position);
  constexpr std::string_view kUtf8 = "UTF-8";
  if (position == std::string_view::npos || declaration.size() - position < kUtf8.size() + 2) {
    return false;
  }
  return strncasecmp(declaration.data() + position + 1, kUtf8.data(), kUtf8.size()) == 0 &&
         declaration[position + 1 + kUtf8.size()] == declaration[position];
}

/// Whether the document is in plain UTF-8, which needs no conversion.
bool IsPlainlyEncoded(std::string_view text) {
  text = WithoutByteOrderMark(text);
  for (const char c : text.substr(0, 4)) {
    if (c == '\0' || (c & 0x80) != 0) {
      return false;
    }
  }
  return !StartsWith(text, "<?xml") || DeclaresNoOtherEncoding(text.substr(0, text.find("?>")));
}

/// `text` after the next `end`; empty when there is none.
std::string_view After(std::string_view text, std::string_view end) {
  const std::size_t found = text.find(end);
  return found == std::string_view::npos ? std::string_view() : text.substr(found + end.size());
}

/// `text` from its first byte that is not white space on.
std::string_view SkipSpace(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

/// Whether a document type comes before the root element.
bool HasDocumentType(std::string_view text) {
  text = SkipSpace(WithoutByteOrderMark(text));
  while (StartsWith(text, "<?") || StartsWith(text, "<!--")) {
    text = SkipSpace(After(text, text[1] == '?' ? "?>" : "-->"));
  }
  return StartsWith(text, "<!DOCTYPE");
}

}  // namespace

bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObject>& value) {
  // A host program that takes the diagnostics itself gets them from one reading only.
  if (xmlStructuredError != nullptr || !IsPlainlyEncoded(text) || HasDocumentType(text)) {
    return false;
  }
  SilencedDiagnostics diagnostics;
  ValueParser parser(text);
  parser.Parse();
  if (!parser.IsRead() || !diagnostics.IsEmpty()) {
    return false;
  }
  value = parser.GetValue();
  return true;
}

}  // namespace Kestrel::AutoCli

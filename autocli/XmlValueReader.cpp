// A stack of open elements follows the parser's events; every value is complete when its element
// ends, and is handed to the element around it. The first value in the root ends the building; the
// rest is only checked for being well-formed. What goes wrong in the building is kept back until
// the document has proved well-formed.

#include "autocli/XmlValueReader.h"

#include <libxml/parserInternals.h>
#include <strings.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/XmlDocument.h"
#include "autocli/XmlValue.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

constexpr const char* kDocumentName = "STDOUT";
/// The tree refuses a text that it puts together from pieces beyond this many bytes.
constexpr std::size_t kLongestJoinedText = 10000000;

/// Holds the parser's diagnostics back until it is known whether a second reading prints its own.
class HeldDiagnostics {
 public:
  HeldDiagnostics() : handler_(xmlGenericError), context_(xmlGenericErrorContext) {
    xmlSetGenericErrorFunc(this, Collect);
  }
  HeldDiagnostics(const HeldDiagnostics&) = delete;
  HeldDiagnostics& operator=(const HeldDiagnostics&) = delete;
  ~HeldDiagnostics() { Restore(); }

  void Print() const {
    Restore();  // the handler looks up its context by itself
    if (!text_.empty()) {
      handler_(context_, "%s", text_.c_str());
    }
  }

 private:
  __attribute__((format(printf, 2, 3))) static void Collect(void* self, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    char* line = nullptr;
    if (vasprintf(&line, format, arguments) >= 0) {
      static_cast<HeldDiagnostics*>(self)->text_ += line;
      std::free(line);
    }
    va_end(arguments);
  }

  void Restore() const { xmlSetGenericErrorFunc(context_, handler_); }

  xmlGenericErrorFunc handler_;
  void* context_;
  std::string text_;
};

/// The attributes of a start tag, as the parser hands them over: five entries each.
class Attributes {
 public:
  Attributes() = default;
  Attributes(const xmlChar** entries, int count) : entries_(entries), count_(count) {}

  /// The value of the first attribute of that local name; empty when there is none.
  std::string Get(const char* name) const {
    for (int i = 0; i < count_; ++i) {
      const xmlChar** entry = entries_ + 5 * i;
      if (!HasUnknownPrefix(entry) && std::strcmp(AsChars(entry[0]), name) == 0) {
        return Decode(
            std::string_view(AsChars(entry[3]), static_cast<std::size_t>(entry[4] - entry[3])));
      }
    }
    return std::string();
  }

  /// Whether one of them names its element, which only a tree can check.
  bool HasXmlId() const {
    for (int i = 0; i < count_; ++i) {
      if (IsXmlId(entries_ + 5 * i)) {
        return true;
      }
    }
    return false;
  }

 private:
  static bool IsXmlId(const xmlChar** entry) {
    return entry[1] != nullptr && std::strcmp(AsChars(entry[1]), "xml") == 0 &&
           std::strcmp(AsChars(entry[0]), "id") == 0;
  }

  /// The parser hands a "&" over as a reference, the only one that is left in a value: a document
  /// without a type has no entities of its own.
  static std::string Decode(std::string_view value) {
    constexpr std::string_view kReference = "#38;";
    std::string decoded;
    for (std::size_t end = value.find('&'); end != std::string_view::npos; end = value.find('&')) {
      decoded.append(value.substr(0, end + 1));
      value.remove_prefix(std::min(end + 1 + kReference.size(), value.size()));
    }
    return decoded.append(value);
  }

  static bool HasUnknownPrefix(const xmlChar** entry) {
    return entry[1] != nullptr && entry[2] == nullptr;
  }

  const xmlChar** entries_ = nullptr;
  int count_ = 0;
};

/// One open element that the value is being built from.
struct OpenElement {
  enum class Kind { Root, Field, Structure, List, Scalar };

  explicit OpenElement(Kind openKind) : kind(openKind) {}

  Kind kind;
  XmlValueTag scalar = XmlValueTag::String;
  bool hasValue = false;  // a field's
  std::string text;       // a field's name or a scalar's content
  std::shared_ptr<MetaStruct> record;
  std::optional<XmlListBuilder> list;
};

class XmlValueReader {
 public:
  void StartElement(const char* name, const Attributes& attributes) {
    last_ = LastNode::None;
    if (attributes.HasXmlId()) {
      needsTree_ = true;
    }
    if (done_) {
      return;
    }
    if (ignoredDepth_ > 0) {
      ++ignoredDepth_;
      return;
    }
    if (open_.empty()) {
      open_.emplace_back(OpenElement::Kind::Root);
      return;
    }
    StartInside(open_.back(), name, attributes);
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
    if (OpenElement* scalar = OpenScalar()) {
      scalar->text = text;
    }
  }

  /// `data` is null where the instruction has none.
  void ProcessingInstruction(const char* target, const char* data) {
    last_ = LastNode::Other;
    if (done_ || ignoredDepth_ > 0 || open_.empty()) {
      return;
    }
    if (OpenElement* scalar = OpenScalar()) {
      if (data != nullptr) {
        scalar->text = data;
      }
      return;
    }
    if (AwaitsValue(open_.back())) {
      StartValue(target, Attributes());
      EndOpen();
    }
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

  void StartInside(const OpenElement& parent, const char* name, const Attributes& attributes) {
    if (AwaitsValue(parent)) {
      StartValue(name, attributes);
      return;
    }
    if (parent.kind == OpenElement::Kind::Structure && std::strcmp(name, "field") == 0) {
      StartField(attributes);
      return;
    }
    ignoredDepth_ = 1;
  }

  void StartField(const Attributes& attributes) {
    OpenElement field(OpenElement::Kind::Field);
    field.text = attributes.Get("name");
    if (field.text.empty()) {
      throw KestrelException(kFieldWithoutName);
    }
    open_.push_back(std::move(field));
  }

  void StartValue(const char* name, const Attributes& attributes) {
    const XmlValueTag tag = ParseXmlValueTag(name);
    if (tag == XmlValueTag::List) {
      OpenElement list(OpenElement::Kind::List);
      list.list.emplace(attributes.Get("type"));
      open_.push_back(std::move(list));
      return;
    }
    if (tag == XmlValueTag::Structure) {
      OpenElement structure(OpenElement::Kind::Structure);
      structure.record = MetaStruct::New(attributes.Get("typeName"));
      open_.push_back(std::move(structure));
      return;
    }
    open_.emplace_back(OpenElement::Kind::Scalar);
    open_.back().scalar = tag;
  }

  void EndOpen() {
    OpenElement ended = std::move(open_.back());
    open_.pop_back();
    switch (ended.kind) {
      case OpenElement::Kind::Root:
        done_ = true;
        return;
      case OpenElement::Kind::Field:
        return;
      case OpenElement::Kind::Structure:
        return Complete(ended.record);
      case OpenElement::Kind::List:
        return Complete(ended.list->Finish());
      case OpenElement::Kind::Scalar:
        return Complete(MakeScalar(ended));
    }
  }

  static std::shared_ptr<MetaObject> MakeScalar(OpenElement& element) {
    if (element.scalar == XmlValueTag::Int) {
      return MakeXmlInt(element.text);
    }
    if (element.scalar == XmlValueTag::Bool) {
      return MakeXmlBool(element.text);
    }
    return MakeXmlString(std::move(element.text));
  }

  /// Hands a finished value to the element that it stands in.
  void Complete(const std::shared_ptr<MetaObject>& value) {
    OpenElement& parent = open_.back();
    if (parent.kind == OpenElement::Kind::List) {
      parent.list->Add(value);
      return;
    }
    if (parent.kind == OpenElement::Kind::Field) {
      parent.hasValue = true;
      open_[open_.size() - 2].record->SetField(parent.text, value);
      return;
    }
    value_ = value;
    done_ = true;
  }

  /// The innermost scalar, when a text would become its content now; else null.
  OpenElement* OpenScalar() {
    const bool isOpen = !done_ && ignoredDepth_ == 0 && !open_.empty() &&
                        open_.back().kind == OpenElement::Kind::Scalar;
    return isOpen ? &open_.back() : nullptr;
  }

  /// Pieces that follow each other directly are one text; any other text replaces the one before.
  void Join(LastNode kind, const char* text, std::size_t length) {
    const bool continues = last_ == kind;
    joinedLength_ = continues ? joinedLength_ + length : length;
    last_ = kind;
    if (continues && joinedLength_ > kLongestJoinedText) {
      needsTree_ = true;
    }
    OpenElement* scalar = OpenScalar();
    if (scalar == nullptr) {
      return;
    }
    if (continues) {
      scalar->text.append(text, length);
    } else {
      scalar->text.assign(text, length);
    }
  }

  std::vector<OpenElement> open_;
  std::shared_ptr<MetaObject> value_;
  std::size_t joinedLength_ = 0;
  int ignoredDepth_ = 0;
  LastNode last_ = LastNode::None;
  bool done_ = false;
  bool needsTree_ = false;
};

/// The parser with its events led into a reader. No exception passes through the parser's frames.
class ValueParser {
 public:
  explicit ValueParser(const std::string& text)
      : parser_(xmlCreateMemoryParserCtxt(text.data(), static_cast<int>(text.size()))) {
    if (parser_ == nullptr) {
      return;
    }
    xmlCtxtUseOptions(parser_.get(), 0);
    parser_->_private = this;
    parser_->input->filename = reinterpret_cast<char*>(xmlStrdup(AsXmlChars(kDocumentName)));
    LeadEventsHere(*parser_->sax);
  }

  void Parse() {
    if (parser_ != nullptr) {
      xmlParseDocument(parser_.get());
    }
  }

  bool NeedsTree() const { return reader_.NeedsTree(); }

  /// The value of the parsed document; null when it is not well-formed or has none.
  std::shared_ptr<MetaObject> GetValue() const {
    if (failure_ != nullptr) {
      std::rethrow_exception(failure_);
    }
    if (parser_ == nullptr || !parser_->wellFormed) {
      return nullptr;
    }
    if (refusal_.has_value()) {
      throw UnbuildableXmlOutput(*refusal_);
    }
    return reader_.GetValue();
  }

 private:
  template <typename Event>
  static void Lead(void* parser, Event event) {
    auto* self = static_cast<ValueParser*>(static_cast<xmlParserCtxt*>(parser)->_private);
    try {
      event(self->reader_);
    } catch (const KestrelException& error) {
      self->refusal_ = error;
      self->reader_.Stop();
    } catch (...) {
      self->failure_ = std::current_exception();
      self->reader_.Stop();
    }
    if (self->reader_.NeedsTree()) {
      xmlStopParser(self->parser_.get());
    }
  }

  static void LeadEventsHere(xmlSAXHandler& handler) {
    handler.startElementNs = [](void* parser, const xmlChar* name, const xmlChar* prefix,
                                const xmlChar* uri, int, const xmlChar**, int count, int,
                                const xmlChar** entries) {
      Lead(parser, [&](XmlValueReader& reader) {
        if (prefix != nullptr && uri == nullptr) {
          // Without its namespace, the prefix stays part of the name.
          const std::string fullName = std::string(AsChars(prefix)) + ":" + AsChars(name);
          reader.StartElement(fullName.c_str(), Attributes(entries, count));
          return;
        }
        reader.StartElement(AsChars(name), Attributes(entries, count));
      });
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
        reader.ProcessingInstruction(AsChars(target), data == nullptr ? nullptr : AsChars(data));
      });
    };
  }

  XmlParser parser_;
  XmlValueReader reader_;
  std::optional<KestrelException> refusal_;
  std::exception_ptr failure_;
};

bool StartsWith(std::string_view text, std::size_t position, std::string_view prefix) {
  return text.compare(position, prefix.size(), prefix) == 0;
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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
  if (StartsWith(text, 0, kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  for (const char c : text.substr(0, 4)) {
    if (c == '\0' || (c & 0x80) != 0) {
      return false;
    }
  }
  return !StartsWith(text, 0, "<?xml") || DeclaresNoOtherEncoding(text.substr(0, text.find("?>")));
}

/// The position after the next `end` from `position` on.
std::size_t After(std::string_view text, std::size_t position, std::string_view end) {
  const std::size_t found = text.find(end, position);
  return found == std::string_view::npos ? found : found + end.size();
}

/// Whether a document type stands before the root element.
bool HasDocumentType(std::string_view text) {
  std::size_t position = StartsWith(text, 0, kByteOrderMark) ? kByteOrderMark.size() : 0;
  for (;;) {
    position = text.find_first_not_of(" \t\r\n", position);
    if (position == std::string_view::npos) {
      return false;
    }
    if (StartsWith(text, position, "<?")) {
      position = After(text, position, "?>");
    } else if (StartsWith(text, position, "<!--")) {
      position = After(text, position, "-->");
    } else {
      return StartsWith(text, position, "<!DOCTYPE");
    }
  }
}

}  // namespace

bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObject>& value) {
  // A host program that takes the diagnostics itself gets them from one reading only.
  if (xmlStructuredError != nullptr || !IsPlainlyEncoded(text) || HasDocumentType(text)) {
    return false;
  }
  const HeldDiagnostics diagnostics;
  ValueParser parser(text);
  parser.Parse();
  if (parser.NeedsTree()) {
    return false;
  }
  diagnostics.Print();
  value = parser.GetValue();
  return true;
}

}  // namespace Kestrel::AutoCli

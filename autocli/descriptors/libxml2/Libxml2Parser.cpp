// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/libxml2/Libxml2Parser.h"

#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/uri.h>
#include <strings.h>
#include <unistd.h>

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "autocli/descriptors/libxml2/XmlDiagnostics.h"
#include "autocli/descriptors/libxml2/XmlLimits.h"

namespace Kestrel::AutoCli {

namespace {

constexpr const char* kIncomplete =
    "The document is incomplete: out of memory, or text of more than 10 MB";

struct FreeXmlString {
  void operator()(xmlChar* text) const { xmlFree(text); }
};

using XmlString = std::unique_ptr<xmlChar, FreeXmlString>;

struct FreeParserContext {
  void operator()(xmlParserCtxt* parser) const {
    xmlFreeDoc(parser->myDoc);
    parser->myDoc = nullptr;
    xmlFreeParserCtxt(parser);
  }
};

/// A parser and the document that it has begun to make, if any.
using ParserContext = std::unique_ptr<xmlParserCtxt, FreeParserContext>;

/// Makes the tree of a document, and stops the parser when the document exceeds a limit.
///
/// It wraps the function that reads the parser's input, and some of the parser's handlers.
class LimitedParser {
 public:
  /// `parser` must have its input.
  explicit LimitedParser(ParserContext parser) : parser_(std::move(parser)) {
    parser_->sax->startElementNs = StartElement;
    parser_->sax->entityDecl = DeclareEntity;
    parser_->sax->attributeDecl = DeclareAttribute;
    parser_->_private = this;
  }
  LimitedParser(const LimitedParser&) = delete;
  LimitedParser& operator=(const LimitedParser&) = delete;

  /// Checks the limit of attributes at each read, so that the parser stops even in the middle of a
  /// start tag that exceeds it. Must be called unless all of the input is in the parser's buffer
  /// from the beginning.
  void CheckEachRead() {
    xmlParserInputBuffer& buffer = *parser_->input->buf;
    read_ = std::exchange(buffer.readcallback, Read);
    close_ = std::exchange(buffer.closecallback, Close);
    context_ = std::exchange(buffer.context, this);
  }

  /// Returns null when the document is not well-formed. Throws std::runtime_error when it exceeds a
  /// limit or when memory runs out.
  XmlDocument Parse(const XmlDiagnostics& diagnostics) {
    xmlParseDocument(parser_.get());
    if (fault_ != nullptr) {
      throw std::runtime_error(fault_);
    }
    if (parser_->errNo == XML_ERR_NO_MEMORY || diagnostics.HasMemoryFailure()) {
      throw std::runtime_error(kIncomplete);
    }
    return XmlDocument(parser_->wellFormed == 0 ? nullptr : std::exchange(parser_->myDoc, nullptr),
                       {xmlFreeDoc});
  }

 private:
  static LimitedParser& Of(void* parser) {
    return *static_cast<LimitedParser*>(static_cast<xmlParserCtxt*>(parser)->_private);
  }

  static int Read(void* self, char* buffer, int length) {
    auto& parser = *static_cast<LimitedParser*>(self);
    if (StopAtTooManyAttributes(*parser.parser_)) {
      parser.fault_ = kTooManyXmlAttributes;
      return 0;
    }
    return parser.read_(parser.context_, buffer, length);
  }

  static int Close(void* self) {
    const auto& parser = *static_cast<LimitedParser*>(self);
    return parser.close_ == nullptr ? 0 : parser.close_(parser.context_);
  }

  /// Inside an entity, `parser` is not the parser of the document but one for the entity alone.
  static void StartElement(void* parser, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                           int count, int defaultCount, const xmlChar** attributes) {
    Of(parser).CheckStartTag(*static_cast<xmlParserCtxt*>(parser), count, defaultCount, attributes);
    if (Of(parser).fault_ == nullptr) {
      xmlSAX2StartElementNs(parser, name, prefix, uri, namespaceCount, namespaces, count,
                            defaultCount, attributes);
    }
  }

  void CheckStartTag(xmlParserCtxt& parser, int count, int defaultCount,
                     const xmlChar** attributes) {
    if (HasTooManyAttributes(parser, count)) {
      StopBecauseOf(kTooManyXmlAttributes, parser);
      return;
    }
    for (int i = count - defaultCount; i < count; ++i) {
      // Local name, prefix, namespace, begin and end of the value.
      const xmlChar** const entry = attributes + 5 * i;
      defaultsSize_ += static_cast<std::size_t>(entry[4] - entry[3]);
    }
    if (defaultsSize_ > kMaxXmlExpansion) {
      StopBecauseOf(kTooMuchXmlExpansion, parser);
    }
  }

  static void DeclareEntity(void* parser, const xmlChar* name, int type, const xmlChar* publicId,
                            const xmlChar* systemId, xmlChar* content) {
    const std::string_view markup = content == nullptr ? "" : AsChars(content);
    if (CountMostAttributes(markup) > kMaxXmlAttributes) {
      Of(parser).StopBecauseOf(kTooManyXmlAttributes, *static_cast<xmlParserCtxt*>(parser));
      return;
    }
    xmlSAX2EntityDecl(parser, name, type, publicId, systemId, content);
    // If there was no memory for an entity, it is missing without a diagnostic.
    if (!IsDeclared(static_cast<xmlParserCtxt*>(parser)->myDoc, name, type)) {
      Of(parser).StopBecauseOf(kIncomplete, *static_cast<xmlParserCtxt*>(parser));
    }
  }

  static bool IsDeclared(xmlDoc* document, const xmlChar* name, int type) {
    const bool isParameter =
        type == XML_INTERNAL_PARAMETER_ENTITY || type == XML_EXTERNAL_PARAMETER_ENTITY;
    return (isParameter ? xmlGetParameterEntity(document, name)
                        : xmlGetDocEntity(document, name)) != nullptr;
  }

  static void DeclareAttribute(void* parser, const xmlChar* element, const xmlChar* name, int type,
                               int kind, const xmlChar* value, xmlEnumeration* words) {
    Of(parser).CountDefault(element, value, *static_cast<xmlParserCtxt*>(parser));
    xmlSAX2AttributeDecl(parser, element, name, type, kind, value, words);
  }

  void CountDefault(const xmlChar* element, const xmlChar* value, xmlParserCtxt& parser) {
    try {
      if (value != nullptr && ++defaults_[AsChars(element)] > kMaxXmlAttributes) {
        StopBecauseOf(kTooManyXmlAttributes, parser);
      }
    } catch (const std::exception&) {
      StopBecauseOf(kIncomplete, parser);
    }
  }

  void StopBecauseOf(const char* fault, xmlParserCtxt& parser) {
    fault_ = fault;
    Stop(parser);
    Stop(*parser_);
  }

  xmlInputReadCallback read_ = nullptr;
  xmlInputCloseCallback close_ = nullptr;
  void* context_ = nullptr;
  std::unordered_map<std::string, int>
      defaults_;                  // the number of default attributes declared for each element
  std::size_t defaultsSize_ = 0;  // the total size of the inserted defaults
  const char* fault_ = nullptr;
  ParserContext parser_;  // the last, so released first: that calls `Close`
};

/// Makes `input` the input of `parser` and forbids access to a network. Returns false when `input`
/// is null or when one of these steps fails.
bool SetInput(xmlParserCtxt& parser, xmlParserInput* input) {
  if (input == nullptr || inputPush(&parser, input) < 0) {
    return false;
  }
  return xmlCtxtUseOptions(&parser, XML_PARSE_NONET) == 0;
}

/// Returns a parser that reads from `buffer` and owns it. Null when memory runs out or `buffer` is
/// null.
ParserContext MakeParser(xmlParserInputBuffer* buffer) {
  ParserContext parser(buffer == nullptr ? nullptr : xmlNewParserCtxt());
  xmlParserInput* const input =
      parser == nullptr ? nullptr
                        : xmlNewIOInputStream(parser.get(), buffer, XML_CHAR_ENCODING_NONE);
  if (input == nullptr) {
    xmlFreeParserInputBuffer(buffer);
    return nullptr;
  }
  return SetInput(*parser, input) ? std::move(parser) : ParserContext();
}

/// Moves the first bytes of `*text`, a `std::string_view`, to `buffer`. Returns their number, which
/// is at most `length`.
int TakeText(void* text, char* buffer, int length) {
  auto& left = *static_cast<std::string_view*>(text);
  const std::size_t count = left.copy(buffer, static_cast<std::size_t>(length));
  left.remove_prefix(count);
  return static_cast<int>(count);
}

XmlDocument ParseFromInput(ParserContext parser, const XmlDiagnostics& diagnostics) {
  LimitedParser limited(std::move(parser));
  limited.CheckEachRead();
  return limited.Parse(diagnostics);
}

/// Whether libxml2 would fetch `path` from a network.
bool IsOnNetwork(const std::string& path) {
  return strncasecmp(path.c_str(), "http://", 7) == 0 ||
         strncasecmp(path.c_str(), "ftp://", 6) == 0;
}

class Libxml2Parser final : public XmlParser {
 public:
  Libxml2Parser() { xmlCheckVersion(LIBXML_VERSION); }
  Libxml2Parser(const Libxml2Parser&) = delete;
  Libxml2Parser& operator=(const Libxml2Parser&) = delete;

  XmlDocument ParseText(std::string_view text, const char* name) const override;
  XmlDocument ParseFile(const std::string& path, const std::string& name) const override;
  XmlDocument FindAndParseFile(const std::string& path) const override;

  void ReportMissingFile(const std::string& path) const override {
    const XmlDiagnostics diagnostics;
    xmlGenericError(xmlGenericErrorContext, "I/O warning : failed to load external entity \"%s\"\n",
                    path.c_str());
  }

  const xmlAttr* FindAttribute(const xmlNode* element, const char* name) const override {
    return xmlHasProp(element, AsXmlChars(name));
  }
  std::string ExpandAttribute(const xmlAttr& attribute) const override {
    return AutoCli::ExpandAttribute(attribute);
  }
  void RefuseLargeExpansion(const xmlNode& node) const override {
    AutoCli::RefuseLargeExpansion(node);
  }
};

XmlDocument Libxml2Parser::ParseText(std::string_view text, const char* name) const {
  const XmlDiagnostics diagnostics;
  // Reads from memory if no start tag can exceed the limit of attributes, because diagnostics then
  // quote more of the document. Otherwise reads in pieces, so that each read can be checked.
  const bool isInMemory = HasFewAttributes(text);
  ParserContext parser = MakeParser(
      isInMemory ? xmlParserInputBufferCreateMem(text.data(), static_cast<int>(text.size()),
                                                 XML_CHAR_ENCODING_NONE)
                 : xmlParserInputBufferCreateIO(TakeText, nullptr, &text, XML_CHAR_ENCODING_NONE));
  if (parser == nullptr) {
    throw std::runtime_error(kIncomplete);
  }
  parser->input->filename = AsChars(xmlStrdup(AsXmlChars(name)));
  LimitedParser limited(std::move(parser));
  if (!isInMemory) {
    limited.CheckEachRead();
  }
  return limited.Parse(diagnostics);
}

XmlDocument Libxml2Parser::ParseFile(const std::string& path, const std::string& name) const {
  const XmlDiagnostics diagnostics;
  ParserContext parser =
      MakeParser(xmlParserInputBufferCreateFilename(path.c_str(), XML_CHAR_ENCODING_NONE));
  if (parser == nullptr) {
    return nullptr;
  }
  parser->input->filename = AsChars(xmlCanonicPath(AsXmlChars(name.c_str())));
  return ParseFromInput(std::move(parser), diagnostics);
}

XmlDocument Libxml2Parser::FindAndParseFile(const std::string& path) const {
  if (IsOnNetwork(path)) {
    ReportMissingFile(path);
    return nullptr;
  }
  const XmlDiagnostics diagnostics;
  ParserContext parser(xmlNewParserCtxt());
  const XmlString name(xmlCanonicPath(AsXmlChars(path.c_str())));
  // Not `xmlLoadExternalEntity`: that looks for the name in catalogs, which may be on a network.
  if (parser == nullptr || name == nullptr ||
      !SetInput(*parser, xmlNewInputFromFile(parser.get(), AsChars(name.get())))) {
    return nullptr;
  }
  return ParseFromInput(std::move(parser), diagnostics);
}

}  // namespace
}  // namespace Kestrel::AutoCli

const Kestrel::AutoCli::XmlParser* Kestrel_GetXmlParser() {
  static const Kestrel::AutoCli::Libxml2Parser parser;
  return &parser;
}

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The events of the parser go straight to a builder. Once the value is complete or cannot be built,
// the rest of the document is still checked for being well-formed: that fault takes precedence over
// an invalid value.
//
// A document about which the parser reports anything is read through a tree instead, because the
// diagnostics must be those of a parser that makes a tree.

#include "autocli/descriptors/XmlValueReader.h"

#include <libxml/parserInternals.h>

#include <exception>
#include <optional>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlProlog.h"
#include "autocli/descriptors/XmlValue.h"
#include "autocli/descriptors/XmlValueBuilder.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;

namespace {

/// Suppresses the diagnostics of parsers during its lifetime and notes whether there were any.
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

/// Reads from a `std::string_view` and removes from it what was read.
int ReadText(void* left, char* buffer, int length) {
  auto* text = static_cast<std::string_view*>(left);
  const std::size_t count = text->copy(buffer, static_cast<std::size_t>(length));
  text->remove_prefix(count);
  return static_cast<int>(count);
}

/// Returns a parser that is set up as by `xmlReadMemory`, but reads `text` piece by piece and so
/// makes no copy of the whole. `text` must outlive it. Null when `text` is empty or memory runs
/// out.
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

/// A parser whose events go to a builder. Exceptions of the builder are kept until the parser has
/// returned, because they must not pass through its frames.
class ValueParser {
 public:
  explicit ValueParser(const std::string& text) : text_(text), parser_(MakeParser(text_)) {
    if (parser_ != nullptr) {
      builder_.emplace(parser_->dict);
      parser_->_private = this;
      ForwardEvents(*parser_->sax);
    }
  }

  void Parse() {
    if (parser_ != nullptr) {
      xmlParseDocument(parser_.get());
    }
  }

  /// Whether the document is well-formed and a tree would lead to the same value.
  bool IsRead() const {
    return parser_ != nullptr && parser_->wellFormed != 0 && !builder_->NeedsTree();
  }

  /// The value of a document that was read; null when it has none. Throws what the builder threw.
  const std::shared_ptr<MetaObject>& GetValue() const {
    if (failure_ != nullptr) {
      std::rethrow_exception(failure_);
    }
    if (refusal_.has_value()) {
      throw UnbuildableXmlOutput(*refusal_);
    }
    return builder_->GetValue();
  }

 private:
  template <typename Event>
  static void Forward(void* parser, Event event) {
    auto* self = static_cast<ValueParser*>(static_cast<xmlParserCtxt*>(parser)->_private);
    try {
      event(*self->builder_);
    } catch (const KestrelException& error) {
      self->refusal_ = error;
      self->builder_->Stop();
    } catch (...) {
      self->failure_ = std::current_exception();
      self->builder_->Stop();
    }
    if (self->builder_->NeedsTree()) {
      xmlStopParser(self->parser_.get());
    }
  }

  static void ForwardEvents(xmlSAXHandler& handler) {
    handler.startElementNs = [](void* parser, const xmlChar* name, const xmlChar*, const xmlChar*,
                                int, const xmlChar**, int count, int, const xmlChar** entries) {
      Forward(parser, [&](XmlValueBuilder& builder) {
        builder.StartElement(name, XmlAttributes(entries, count));
      });
    };
    handler.endElementNs = [](void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
      Forward(parser, [](XmlValueBuilder& builder) { builder.EndElement(); });
    };
    handler.characters = [](void* parser, const xmlChar* text, int length) {
      Forward(parser, [&](XmlValueBuilder& builder) {
        builder.Text(AsChars(text), static_cast<std::size_t>(length));
      });
    };
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = [](void* parser, const xmlChar* text, int length) {
      Forward(parser, [&](XmlValueBuilder& builder) {
        builder.CData(AsChars(text), static_cast<std::size_t>(length));
      });
    };
    handler.comment = [](void* parser, const xmlChar* text) {
      Forward(parser, [&](XmlValueBuilder& builder) { builder.Comment(AsChars(text)); });
    };
    handler.processingInstruction = [](void* parser, const xmlChar* target, const xmlChar* data) {
      Forward(parser, [&](XmlValueBuilder& builder) {
        builder.ProcessingInstruction(target, data == nullptr ? nullptr : AsChars(data));
      });
    };
  }

  std::string_view text_;
  XmlParser parser_;
  std::optional<XmlValueBuilder> builder_;
  std::optional<KestrelException> refusal_;
  std::exception_ptr failure_;
};

}  // namespace

bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObject>& value) {
  // A program with its own handler would otherwise get the diagnostics of two parsers.
  if (xmlStructuredError != nullptr || !HasPlainProlog(text)) {
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

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The builder receives the events directly from the parser. Once the value is complete or cannot be
// built, the parser still checks that the rest of the document is well-formed, because that error
// takes precedence over an invalid value.
//
// If the parser reports anything, the document is read through a tree instead, because the
// diagnostics must be those of a parser that makes a tree.

#include "autocli/descriptors/XmlValueReader.h"

#include <exception>
#include <optional>
#include <string_view>

#include "autocli/descriptors/XmlDiagnostics.h"
#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlLimits.h"
#include "autocli/descriptors/XmlProlog.h"
#include "autocli/descriptors/XmlTree.h"
#include "autocli/descriptors/XmlValue.h"
#include "autocli/descriptors/XmlValueBuilder.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;

namespace {

/// A parser whose events go to a builder. Exceptions of the builder are kept until the parser has
/// returned, because they must not pass through its frames.
class ValueParser {
 public:
  explicit ValueParser(const std::string& text)
      : text_(text),
        parser_(text.empty() ? nullptr
                             : MakeXmlParser(xmlParserInputBufferCreateIO(
                                   Read, nullptr, this, XML_CHAR_ENCODING_NONE))) {
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
    return parser_ != nullptr && parser_->wellFormed != 0 && !isStopped_ && !builder_->NeedsTree();
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
  static int Read(void* self, char* buffer, int length) {
    auto& reader = *static_cast<ValueParser*>(self);
    if (StopAtTooManyAttributes(*reader.parser_)) {
      reader.isStopped_ = true;
      return 0;
    }
    return TakeText(&reader.text_, buffer, length);
  }

  template <typename Event>
  static void Forward(void* parser, Event event) {
    ValueParser& self = Self(parser);
    try {
      event(*self.builder_);
    } catch (const KestrelException& error) {
      self.refusal_ = error;
      self.builder_->Stop();
    } catch (...) {
      self.failure_ = std::current_exception();
      self.builder_->Stop();
    }
    if (self.builder_->NeedsTree()) {
      xmlStopParser(self.parser_.get());
    }
  }

  static ValueParser& Self(void* parser) {
    return *static_cast<ValueParser*>(static_cast<xmlParserCtxt*>(parser)->_private);
  }

  static void ForwardEvents(xmlSAXHandler& handler) {
    handler.startElementNs = [](void* parser, const xmlChar* name, const xmlChar*, const xmlChar*,
                                int, const xmlChar**, int count, int, const xmlChar** entries) {
      if (HasTooManyAttributes(*static_cast<xmlParserCtxt*>(parser), count)) {
        Stop(*static_cast<xmlParserCtxt*>(parser));
        Self(parser).isStopped_ = true;
        return;
      }
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
  bool isStopped_ = false;
};

}  // namespace

bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObject>& value) {
  // A program with its own handler would otherwise get the diagnostics of two parsers.
  if (xmlStructuredError != nullptr || !HasPlainProlog(text)) {
    return false;
  }
  const XmlDiagnostics diagnostics(XmlDiagnostics::Mode::Silenced);
  ValueParser parser(text);
  parser.Parse();
  if (!parser.IsRead() || !diagnostics.IsEmpty()) {
    return false;
  }
  value = parser.GetValue();
  return true;
}

}  // namespace Kestrel::AutoCli

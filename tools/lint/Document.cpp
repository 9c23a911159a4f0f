// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Document.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <utility>

#include "tools/lint/Scanner.h"

namespace Kestrel::Lint {

namespace {

const std::string& EmptyText() {
  static const std::string text;
  return text;
}

void IgnoreDiagnostic(void* /*context*/, const char* /*format*/, ...) {}

/// The first diagnostic of the parser on this thread during the lifetime of the object.
class FirstDiagnostic {
 public:
  FirstDiagnostic() : handler_(xmlStructuredError), context_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, &FirstDiagnostic::Receive);
  }
  FirstDiagnostic(const FirstDiagnostic&) = delete;
  FirstDiagnostic& operator=(const FirstDiagnostic&) = delete;
  ~FirstDiagnostic() { xmlSetStructuredErrorFunc(context_, handler_); }

  std::string message;
  Position position;

 private:
  static void Receive(void* self, xmlError* error) {
    auto* const first = static_cast<FirstDiagnostic*>(self);
    if (!first->message.empty() || error == nullptr || error->message == nullptr) {
      return;
    }
    first->message = error->message;
    first->message.erase(first->message.find_last_not_of(" \n.") + 1);
    std::replace(first->message.begin(), first->message.end(), '\n', ' ');
    first->position.line = static_cast<std::size_t>(std::max(error->line, 1));
    first->position.column = static_cast<std::size_t>(std::max(error->int2, 1));
  }

  const xmlStructuredErrorFunc handler_;
  void* const context_;
};

bool IsUtf8(const xmlDoc& tree) {
  const std::string encoding =
      tree.encoding == nullptr ? "UTF-8" : reinterpret_cast<const char*>(tree.encoding);
  return xmlParseCharEncoding(encoding.c_str()) == XML_CHAR_ENCODING_UTF8 ||
         xmlParseCharEncoding(encoding.c_str()) == XML_CHAR_ENCODING_ASCII;
}

// Links elements with nodes; both are in document order.
void LinkElements(Element& element, xmlNode* node) {
  element.node = node;
  xmlNode* child = node->children;
  for (const auto& own : element.children) {
    while (child != nullptr && child->type != XML_ELEMENT_NODE) {
      child = child->next;
    }
    if (child == nullptr) {
      return;
    }
    LinkElements(*own, child);
    child = child->next;
  }
}

}  // namespace

SilentParser::SilentParser() : handler_(xmlGenericError), context_(xmlGenericErrorContext) {
  xmlSetGenericErrorFunc(nullptr, &IgnoreDiagnostic);
}

SilentParser::~SilentParser() { xmlSetGenericErrorFunc(context_, handler_); }

const std::string& Element::Get(std::string_view attribute) const {
  for (const Attribute& own : attributes) {
    if (own.name == attribute) {
      return own.value;
    }
  }
  return EmptyText();
}

bool Element::Has(std::string_view attribute) const {
  return std::any_of(attributes.begin(), attributes.end(),
                     [attribute](const Attribute& own) { return own.name == attribute; });
}

const Element* Element::Find(std::string_view child) const {
  for (const auto& own : children) {
    if (own->name == child) {
      return own.get();
    }
  }
  return nullptr;
}

std::vector<const Element*> Element::FindAll(std::string_view child) const {
  std::vector<const Element*> found;
  for (const auto& own : children) {
    if (own->name == child) {
      found.push_back(own.get());
    }
  }
  return found;
}

const Piece* Element::GetContentPiece() const { return pieces.empty() ? nullptr : &pieces.back(); }

std::string Element::GetContent() const {
  return pieces.empty() ? std::string() : pieces.back().text;
}

Document::Document(std::string text) : text_(std::move(text)) {
  lineStarts_.push_back(0);
  for (std::size_t i = text_.find('\n'); i != std::string::npos; i = text_.find('\n', i + 1)) {
    lineStarts_.push_back(i + 1);
  }
  Parse();
  if (!problem_) {
    Scanner scanner(text_, [this](std::size_t offset) { return PositionOf(offset); });
    root_ = scanner.Run();
    suppressions_ = std::move(scanner.suppressions);
    LinkElements(*root_, xmlDocGetRootElement(tree_));
  }
}

Document::~Document() { xmlFreeDoc(tree_); }

Position Document::PositionOf(std::size_t offset) const {
  const auto after = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
  const std::size_t start = *(after - 1);
  const auto isCharacterStart = [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
  };
  const auto count =
      std::count_if(text_.begin() + static_cast<std::ptrdiff_t>(start),
                    text_.begin() + static_cast<std::ptrdiff_t>(offset), isCharacterStart);
  return {static_cast<std::size_t>(after - lineStarts_.begin()),
          static_cast<std::size_t>(count) + 1};
}

void Document::Parse() {
  if (text_.empty() || text_.size() > kMaxSize) {
    const char* const what = text_.empty() ? "the file is empty" : "the file is too large";
    problem_ = Problem{"not-well-formed", {}, what, false};
    return;
  }
  FirstDiagnostic diagnostic;
  tree_ = xmlReadMemory(text_.data(), static_cast<int>(text_.size()), nullptr, nullptr, 0);
  if (tree_ == nullptr || xmlDocGetRootElement(tree_) == nullptr) {
    problem_ = Problem{"not-well-formed", diagnostic.position, diagnostic.message, false};
  } else if (xmlGetIntSubset(tree_) != nullptr) {
    problem_ =
        Problem{"document-type", {}, "the file has a document type and is not examined", true};
  } else if (!IsUtf8(*tree_)) {
    problem_ = Problem{"encoding", {}, "the file is not in UTF-8 and is not examined", true};
  }
}

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlEventTree.h"

#include <libxml/globals.h>

#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "autocli/descriptors/XmlDiagnostics.h"
#include "autocli/descriptors/XmlLimits.h"
#include "autocli/descriptors/XmlStartTag.h"
#include "autocli/descriptors/XmlTree.h"

namespace Kestrel::AutoCli {

namespace {

constexpr xmlChar kTextName[] = "text";
constexpr xmlChar kCommentName[] = "comment";

std::string_view View(const xmlChar* text, int length) {
  return {AsChars(text), static_cast<std::size_t>(length)};
}

}  // namespace

std::unique_ptr<XmlEventTree> XmlEventTree::Read(std::string_view text) {
  // A program with its own handler would otherwise get the diagnostics of two parsers.
  if (xmlStructuredError != nullptr || text.empty() || text.size() > kMaxSize ||
      !HasFewAttributes(text)) {
    return nullptr;
  }
  const XmlDiagnostics diagnostics(XmlDiagnostics::Mode::Silenced);
  std::unique_ptr<XmlEventTree> tree(new XmlEventTree(text));
  return tree->Parse() && diagnostics.IsEmpty() ? std::move(tree) : nullptr;
}

XmlEventTree::XmlEventTree(std::string_view text)
    : memory_(4 * text.size()),
      parser_(MakeXmlParser(xmlParserInputBufferCreateMem(
          text.data(), static_cast<int>(text.size()), XML_CHAR_ENCODING_NONE))) {
  if (parser_ != nullptr) {
    // A program can have the space between elements removed from every tree.
    isOrdinary_ = parser_->sax->ignorableWhitespace == parser_->sax->characters;
    parser_->_private = this;
    ForwardEvents(*parser_->sax);
  }
}

bool XmlEventTree::Parse() {
  if (parser_ == nullptr || !isOrdinary_) {
    return false;
  }
  xmlParseDocument(parser_.get());
  return parser_->wellFormed != 0 && isOrdinary_ && root_ != nullptr;
}

/// Exceptions must not pass through the frames of the parser.
template <typename Event>
void XmlEventTree::Forward(void* parser, Event event) {
  auto& tree = *static_cast<XmlEventTree*>(static_cast<xmlParserCtxt*>(parser)->_private);
  try {
    event(tree);
  } catch (const std::exception&) {
    tree.isOrdinary_ = false;
    xmlStopParser(tree.parser_.get());
  }
}

void XmlEventTree::ForwardEvents(xmlSAXHandler& handler) {
  handler.startElementNs = [](void* parser, const xmlChar* name, const xmlChar*, const xmlChar*,
                              int, const xmlChar**, int count, int, const xmlChar** attributes) {
    Forward(parser,
            [&](XmlEventTree& tree) { tree.StartElement(name, XmlAttributes(attributes, count)); });
  };
  handler.endElementNs = [](void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
    Forward(parser, [](XmlEventTree& tree) { tree.EndElement(); });
  };
  handler.characters = [](void* parser, const xmlChar* text, int length) {
    Forward(parser, [&](XmlEventTree& tree) {
      tree.AddText(XML_TEXT_NODE, kTextName, View(text, length));
    });
  };
  handler.ignorableWhitespace = handler.characters;
  handler.cdataBlock = [](void* parser, const xmlChar* text, int length) {
    Forward(parser, [&](XmlEventTree& tree) {
      tree.AddText(XML_CDATA_SECTION_NODE, nullptr, View(text, length));
    });
  };
  handler.comment = [](void* parser, const xmlChar* text) {
    Forward(parser, [&](XmlEventTree& tree) {
      tree.AddOther(XML_COMMENT_NODE, kCommentName, tree.Copy(AsChars(text)));
    });
  };
  handler.processingInstruction = [](void* parser, const xmlChar* target, const xmlChar* data) {
    Forward(parser, [&](XmlEventTree& tree) {
      xmlChar* const content = data == nullptr ? nullptr : tree.Copy(AsChars(data));
      tree.AddOther(XML_PI_NODE, target, content);
    });
  };
}

void XmlEventTree::StartElement(const xmlChar* name, const XmlAttributes& attributes) {
  xmlNode& element = Append(Make<xmlNode>(XML_ELEMENT_NODE, name));
  AddAttributes(attributes, element);
  open_ = &element;
}

void XmlEventTree::AddAttributes(const XmlAttributes& attributes, xmlNode& element) {
  // Only the tree of the parser checks that such a name is unique.
  isOrdinary_ = isOrdinary_ && !attributes.HasXmlId();
  xmlAttr** end = &element.properties;
  for (int i = 0; i < attributes.GetCount(); ++i) {
    auto& attribute = Make<xmlAttr>(XML_ATTRIBUTE_NODE, attributes.GetName(i));
    if (attributes.GetSize(i) > 0) {
      attribute.children = &MakeText(XML_TEXT_NODE, kTextName, attributes.Get(i, value_));
    }
    *end = &attribute;
    end = &attribute.next;
  }
}

// After a fault, the parser can pass text and ends of elements whose start it has not passed.

void XmlEventTree::EndElement() {
  if (open_ != nullptr) {
    open_ = open_->parent;
  }
}

/// Adds to the last node if that is of the same type: the parser passes text with references in
/// pieces.
void XmlEventTree::AddText(xmlElementType type, const xmlChar* name, std::string_view text) {
  if (open_ == nullptr) {
    return;
  }
  xmlNode* const last = open_->last;
  if (last != nullptr && last->type == type) {
    ExtendText(*last, text);
  } else {
    Append(MakeText(type, name, text));
    textSize_ = textCapacity_ = text.size();
  }
}

/// `node` is the last one that was made.
void XmlEventTree::ExtendText(xmlNode& node, std::string_view piece) {
  const std::size_t size = textSize_ + piece.size();
  if (size > textCapacity_) {
    textCapacity_ = 2 * size;
    auto* const content = static_cast<xmlChar*>(memory_.allocate(textCapacity_ + 1, 1));
    std::memcpy(content, node.content, textSize_);
    node.content = content;
  }
  std::memcpy(node.content + textSize_, piece.data(), piece.size());
  node.content[size] = '\0';
  textSize_ = size;
}

xmlNode& XmlEventTree::MakeText(xmlElementType type, const xmlChar* name, std::string_view text) {
  auto& node = Make<xmlNode>(type, name);
  node.content = Copy(text);
  return node;
}

void XmlEventTree::AddOther(xmlElementType type, const xmlChar* name, xmlChar* content) {
  if (open_ != nullptr) {
    Append(Make<xmlNode>(type, name)).content = content;
  }
}

xmlNode& XmlEventTree::Append(xmlNode& node) {
  if (open_ == nullptr) {
    root_ = &node;
    return node;
  }
  (open_->last == nullptr ? open_->children : open_->last->next) = &node;
  node.prev = std::exchange(open_->last, &node);
  node.parent = open_;
  return node;
}

template <typename Node>
Node& XmlEventTree::Make(xmlElementType type, const xmlChar* name) {
  auto* const node = new (memory_.allocate(sizeof(Node), alignof(Node))) Node{};
  node->type = type;
  node->name = name;
  return *node;
}

xmlChar* XmlEventTree::Copy(std::string_view text) {
  auto* const copy = static_cast<char*>(memory_.allocate(text.size() + 1, 1));
  copy[text.copy(copy, text.size())] = '\0';
  return reinterpret_cast<xmlChar*>(copy);
}

}  // namespace Kestrel::AutoCli

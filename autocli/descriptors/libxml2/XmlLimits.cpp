// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/libxml2/XmlLimits.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "autocli/descriptors/libxml2/XmlProlog.h"
#include "autocli/text/StartsWith.h"

namespace Kestrel::AutoCli {

namespace {

/// Returns the end of the comment, CDATA section or processing instruction at `begin`; `begin` if
/// there is none.
std::size_t SkipSection(std::string_view markup, std::size_t begin) {
  struct Section {
    std::string_view opening;
    std::string_view closing;
  };
  constexpr Section kSections[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
  for (const Section& section : kSections) {
    if (StartsWith(markup.substr(begin), section.opening)) {
      const std::size_t end = markup.find(section.closing, begin + section.opening.size());
      return end == std::string_view::npos ? markup.size() : end + section.closing.size();
    }
  }
  return begin;
}

/// Returns the number of attributes in the start tag at `position`, and moves `position` to its
/// end.
std::size_t CountAttributes(std::string_view markup, std::size_t& position) {
  std::size_t count = 0;
  char quote = '\0';
  for (; position < markup.size(); ++position) {
    const char c = markup[position];
    if (quote != '\0') {
      quote = c == quote ? '\0' : quote;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      break;
    } else if (c == '=') {
      ++count;
    }
  }
  return count;
}

/// Adds up the sizes to which references to entities expand. No sum exceeds the limit by more than
/// 1.
class Expansion {
 public:
  explicit Expansion(const xmlDoc* document) : document_(document) {}

  void AddReference(const xmlNode* reference) {
    total_ = Sum(total_, SizeOf(xmlGetDocEntity(document_, reference->name), 0));
  }

  void AddReferencesIn(const xmlAttr* attribute) {
    for (const xmlNode* child = attribute->children; child != nullptr; child = child->next) {
      if (child->type == XML_ENTITY_REF_NODE) {
        AddReference(child);
      }
    }
  }

  bool IsTooLarge() const { return total_ > kMaxXmlExpansion; }

 private:
  /// The parser follows entities within entities up to this depth.
  static constexpr int kMaxDepth = 1024;

  static std::size_t Sum(std::size_t left, std::size_t right) {
    return std::min(left + right, kMaxXmlExpansion + 1);
  }

  std::size_t SizeOf(const xmlEntity* entity, int depth) {
    if (entity == nullptr || entity->content == nullptr) {
      return 0;
    }
    // Until its size is known, an entity counts as too large, because it may refer to itself.
    const auto [known, isNew] = sizes_.emplace(entity, kMaxXmlExpansion + 1);
    if (!isNew || depth == kMaxDepth) {
      return known->second;
    }
    std::size_t& size = known->second;
    return size = SizeOfText(AsChars(entity->content), depth);
  }

  /// Returns the size of `text` after all references in it are expanded.
  std::size_t SizeOfText(std::string_view text, int depth) {
    std::size_t size = std::min(text.size(), kMaxXmlExpansion + 1);
    for (std::size_t i = text.find('&'); i != std::string_view::npos; i = text.find('&', i + 1)) {
      const std::string name(text.substr(i + 1, text.find(';', i) - i - 1));
      size = Sum(size, SizeOf(xmlGetDocEntity(document_, AsXmlChars(name.c_str())), depth + 1));
    }
    return size;
  }

  const xmlDoc* const document_;
  std::unordered_map<const xmlEntity*, std::size_t> sizes_;
  std::size_t total_ = 0;
};

/// Returns the node after `node` in document order, within `root`; null after the last one. The
/// expansion of an entity is not part of the tree.
const xmlNode* NextNode(const xmlNode* node, const xmlNode* root) {
  if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
    return node->children;
  }
  while (node != root && node->next == nullptr) {
    node = node->parent;
  }
  return node == root ? nullptr : node->next;
}

/// Appends the value of an attribute to a string, as long as it stays within the limit.
class AttributeExpansion {
 public:
  explicit AttributeExpansion(const xmlDoc* document) : document_(document) {}

  void Append(const xmlNode* first, const xmlNode* last) {
    for (const xmlNode* node = first; node != nullptr; node = node == last ? nullptr : node->next) {
      AppendNode(*node);
      if (value_.size() > kMaxXmlExpansion || ++nodes_ > kMaxXmlExpansion) {
        throw std::runtime_error(kTooMuchXmlExpansion);
      }
    }
  }

  std::string TakeValue() { return std::move(value_); }

 private:
  void AppendNode(const xmlNode& node) {
    const xmlEntity* const entity =
        node.type == XML_ENTITY_REF_NODE ? xmlGetDocEntity(document_, node.name) : nullptr;
    if (entity != nullptr) {
      Append(entity->children, entity->last);
    } else if (node.content != nullptr &&
               (node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE ||
                node.type == XML_ENTITY_REF_NODE)) {
      value_ += AsChars(node.content);
    }
  }

  const xmlDoc* const document_;
  std::string value_;
  std::size_t nodes_ = 0;
};

}  // namespace

bool StopAtTooManyAttributes(xmlParserCtxt& parser) {
  // `maxatts` is the size of an array with five entries for each attribute. It grows to twice its
  // size, so a tag within the limit never makes it larger. `nsNr` is the number of entries in use,
  // two for each namespace; its limit is only as generous.
  constexpr int kMaxEntries = 2 * 5 * kMaxXmlAttributes;
  constexpr int kMaxNamespaceEntries = 2 * 2 * kMaxXmlAttributes;
  const bool isTooLarge = parser.maxatts > kMaxEntries || parser.nsNr > kMaxNamespaceEntries;
  if (isTooLarge) {
    Stop(parser);
  }
  return isTooLarge;
}

void Stop(xmlParserCtxt& parser) {
  // Unlike `xmlStopParser`, this does not change the input, because the callers still use it.
  parser.instate = XML_PARSER_EOF;
  parser.disableSAX = 1;
}

std::size_t CountMostAttributes(std::string_view markup) {
  std::size_t most = 0;
  std::size_t position = markup.find('<');
  while (position < markup.size()) {
    const std::size_t end = SkipSection(markup, position);
    if (end == position) {
      most = std::max(most, CountAttributes(markup, position));
    } else {
      position = end;
    }
    position = markup.find('<', position);
  }
  return most;
}

bool HasFewAttributes(std::string_view document) {
  constexpr std::size_t kShortestAttribute = 5;  // a space, a letter, "=" and two quotes
  return HasPlainProlog(document) &&
         (document.size() <= kShortestAttribute * kMaxXmlAttributes ||
          std::count(document.begin(), document.end(), '=') <= kMaxXmlAttributes);
}

void RefuseLargeExpansion(const xmlNode& root) {
  Expansion expansion(root.doc);
  const xmlNode* node = &root;
  for (; node != nullptr && !expansion.IsTooLarge(); node = NextNode(node, &root)) {
    if (node->type == XML_ENTITY_REF_NODE) {
      expansion.AddReference(node);
    }
    const bool isElement = node->type == XML_ELEMENT_NODE;
    for (const xmlAttr* i = isElement ? node->properties : nullptr; i != nullptr; i = i->next) {
      expansion.AddReferencesIn(i);
    }
  }
  if (expansion.IsTooLarge()) {
    throw std::runtime_error(kTooMuchXmlExpansion);
  }
}

std::string ExpandAttribute(const xmlAttr& attribute) {
  AttributeExpansion expansion(attribute.doc);
  expansion.Append(attribute.children, attribute.last);
  return expansion.TakeValue();
}

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlStartTag.h"

namespace Kestrel::AutoCli {

/// The elements, attributes and text of an ordinary document, as nodes of libxml2.
///
/// They are made from the events of the parser, in memory that is released all at once. This takes
/// half the instructions of the tree that the parser makes itself. Code that reads the parser's
/// tree also reads this one.
///
/// The nodes are valid as long as this object and must not be changed. They belong to no document
/// and to no namespace. An attribute with an empty value has no text.
class XmlEventTree {
 public:
  /// The largest size of an ordinary document, in bytes. No text or tag in it can exceed a limit of
  /// the parser.
  static constexpr std::size_t kMaxSize = 5000000;

  /// Returns null when the document is not ordinary: when it has a document type, is not encoded in
  /// UTF-8, comes near a limit, or when the parser reports anything about it. Such a document must
  /// be read through the parser's own tree. Reports nothing.
  static std::unique_ptr<XmlEventTree> Read(std::string_view text);

  XmlEventTree(const XmlEventTree&) = delete;
  XmlEventTree& operator=(const XmlEventTree&) = delete;

  const xmlNode* GetRoot() const { return root_; }

 private:
  explicit XmlEventTree(std::string_view text);

  bool Parse();

  template <typename Event>
  static void Forward(void* parser, Event event);
  static void ForwardEvents(xmlSAXHandler& handler);

  void StartElement(const xmlChar* name, const XmlAttributes& attributes);
  void AddAttributes(const XmlAttributes& attributes, xmlNode& element);
  void EndElement();
  void AddText(xmlElementType type, const xmlChar* name, std::string_view text);
  void ExtendText(xmlNode& node, std::string_view piece);
  void AddOther(xmlElementType type, const xmlChar* name, xmlChar* content);

  xmlNode& Append(xmlNode& node);
  xmlNode& MakeText(xmlElementType type, const xmlChar* name, std::string_view text);
  template <typename Node>
  Node& Make(xmlElementType type, const xmlChar* name);
  xmlChar* Copy(std::string_view text);

  std::pmr::monotonic_buffer_resource memory_;
  XmlParser parser_;  // its dictionary has the names
  xmlNode* root_ = nullptr;
  xmlNode* open_ = nullptr;  // the innermost element that is open
  std::string value_;        // of an attribute
  std::size_t textSize_ = 0;
  std::size_t textCapacity_ = 0;  // of the last text
  bool isOrdinary_ = true;
};

}  // namespace Kestrel::AutoCli

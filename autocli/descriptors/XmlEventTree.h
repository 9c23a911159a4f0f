// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlScanner.h"

namespace Kestrel::AutoCli {

/// The elements, attributes and text of an ordinary document, as nodes of libxml2.
///
/// The nodes are made without the parser, in memory that is released in one step. Code that reads
/// the parser's tree can read this one too.
///
/// The nodes are valid as long as this object exists, and must not be changed. They belong to no
/// document and to no namespace. An attribute with an empty value has no text.
class XmlEventTree final : private XmlEvents {
 public:
  /// The largest size of a document, in bytes. The memory for a tree is a multiple of the size of
  /// its document.
  static constexpr std::size_t kMaxSize = 5000000;

  /// Returns null when the document is not ordinary (see `ScanXml`) or exceeds `kMaxSize`, and when
  /// the program has made libxml2 remove the space between elements. The document must then be read
  /// through the parser's own tree. Reports nothing. Throws std::bad_alloc when memory runs out.
  static std::unique_ptr<XmlEventTree> Read(std::string_view text);

  XmlEventTree(const XmlEventTree&) = delete;
  XmlEventTree& operator=(const XmlEventTree&) = delete;

  const xmlNode* GetRoot() const { return root_; }

 private:
  /// For a document of `size` bytes. The first block has room for the nodes of most documents. With
  /// several blocks, the allocator would return memory to the system after each descriptor, only to
  /// request it again for the next. Only a document with many short elements or attributes needs
  /// more blocks.
  explicit XmlEventTree(std::size_t size) : memory_(12 * size) {}

  void StartElement(std::string_view name, const XmlAttributes& attributes) override;
  void EndElement() override;
  void Text(std::string_view text) override;
  void CData(std::string_view text) override;
  void Comment(std::string_view text) override;

  void AddAttributes(const XmlAttributes& attributes, xmlNode& element);
  xmlNode& Append(xmlNode& node);
  xmlNode& MakeText(xmlElementType type, const xmlChar* name, std::string_view text);
  template <typename Node>
  Node& Make(xmlElementType type, const xmlChar* name);
  xmlChar* Copy(std::string_view text);

  std::pmr::monotonic_buffer_resource memory_;
  xmlNode* root_ = nullptr;
  xmlNode* open_ = nullptr;  // the innermost element that is open
};

}  // namespace Kestrel::AutoCli

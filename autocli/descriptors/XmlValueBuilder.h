// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "autocli/descriptors/XmlStartTag.h"
#include "autocli/descriptors/XmlValue.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// Builds the value of a document from the events of a parser, one call for each event.
///
/// A value is complete when its element ends, and then becomes part of the element around it. The
/// first value in the root is the result; everything after it is ignored. After a call has thrown
/// KestrelException, `Stop` must be called before any other.
class XmlValueBuilder {
 public:
  /// For a parser with this dictionary, which must outlive the builder.
  explicit XmlValueBuilder(xmlDict* dictionary)
      : names_(dictionary), needsTree_(!names_.IsComplete()) {}

  void StartElement(const xmlChar* name, const XmlAttributes& attributes);
  void EndElement();
  /// Text may come in several pieces, one directly after the other, and so may a CDATA section.
  void Text(const char* text, std::size_t length) { Join(LastNode::Text, text, length); }
  void CData(const char* text, std::size_t length) { Join(LastNode::CData, text, length); }
  void Comment(const char* text);
  /// `data` is null for an instruction without data.
  void ProcessingInstruction(const xmlChar* target, const char* data);

  /// Ignores all events from here on.
  void Stop() { done_ = true; }

  /// Whether reading the document through a tree may have another result, so that this one must not
  /// be used.
  bool NeedsTree() const { return needsTree_; }

  /// The result; null when the root has no value so far.
  const std::shared_ptr<MetaObj::MetaObject>& GetValue() const { return value_; }

 private:
  enum class LastNode { None, Text, CData, Other };

  /// An open element that contains values: the root, a field, a structure or a list.
  struct OpenElement {
    enum class Kind { Root, Field, Structure, List };

    Kind kind = Kind::Root;
    bool hasValue = false;  // of a field
    std::string name;       // of a field
    std::shared_ptr<MetaObj::MetaStruct> structure;
    std::optional<XmlListBuilder> list;
  };

  static bool AwaitsValue(const OpenElement& element);
  OpenElement& Innermost() { return open_[depth_ - 1]; }
  OpenElement& Open(OpenElement::Kind kind);
  void StartInside(const OpenElement& parent, const xmlChar* name, const XmlAttributes& attributes);
  void StartField(const XmlAttributes& attributes);
  void StartValue(const xmlChar* name, const XmlAttributes& attributes);
  XmlValueTag FindTag(const xmlChar* name) const;
  void EndOpen();
  void EndScalar();
  void Complete(const std::shared_ptr<MetaObj::MetaObject>& value);
  bool TakesContent() const;
  void Join(LastNode kind, const char* text, std::size_t length);

  const XmlNames names_;
  // The outermost first; the first `depth_` are in use, the others are kept for their memory.
  std::vector<OpenElement> open_;
  std::size_t depth_ = 0;
  std::optional<XmlValueTag> scalar_;  // an open string, int or bool within the innermost of them
  std::string content_;                // of the scalar
  std::shared_ptr<MetaObj::MetaObject> value_;
  std::size_t joinedLength_ = 0;  // of the pieces of the last text or CDATA section
  int ignoredDepth_ = 0;          // the number of open elements that are ignored
  LastNode last_ = LastNode::None;
  bool done_ = false;
  bool needsTree_;
};

}  // namespace Kestrel::AutoCli

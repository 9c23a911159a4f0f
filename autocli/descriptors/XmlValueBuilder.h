// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "autocli/descriptors/XmlScanner.h"
#include "autocli/descriptors/XmlValue.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// Builds the value of a document from its parts.
///
/// A value is complete when its element ends, and then becomes part of the element around it. The
/// first value in the root is the result; everything after it is ignored. After a call has thrown
/// KestrelException, `Stop` must be called before any other.
class XmlValueBuilder {
 public:
  void StartElement(std::string_view name, const XmlAttributes& attributes);
  void EndElement();
  /// Receives text, a CDATA section or a comment. The last of these in a scalar is its content.
  void Content(std::string_view text);

  /// Ignores all events from here on.
  void Stop() { done_ = true; }

  /// The result; null when the root has no value so far.
  const std::shared_ptr<MetaObj::MetaObject>& GetValue() const { return value_; }

 private:
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
  void StartInside(const OpenElement& parent, std::string_view name,
                   const XmlAttributes& attributes);
  void StartField(const XmlAttributes& attributes);
  void StartValue(std::string_view name, const XmlAttributes& attributes);
  void EndOpen();
  void EndScalar();
  void Complete(const std::shared_ptr<MetaObj::MetaObject>& value);

  // The outermost element comes first. The first `depth_` elements are in use; the others are kept
  // so that their memory can be used again.
  std::vector<OpenElement> open_;
  std::size_t depth_ = 0;
  std::optional<XmlValueTag> scalar_;  // an open string, int or bool inside `Innermost()`
  std::string content_;                // of the scalar
  std::shared_ptr<MetaObj::MetaObject> value_;
  int ignoredDepth_ = 0;  // the number of open elements that are ignored
  bool done_ = false;
};

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Once the value is complete or cannot be built, the rest of the document is still scanned, because
// the error of a document that is not well-formed takes precedence over an invalid value.

#include "autocli/descriptors/XmlValueReader.h"

#include <optional>

#include "autocli/descriptors/XmlScanner.h"
#include "autocli/descriptors/XmlValue.h"
#include "autocli/descriptors/XmlValueBuilder.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;

namespace {

/// Passes the parts of a document to a builder until the builder refuses one.
class ValueEvents final : public XmlEvents {
 public:
  /// The value; null when the document has none. Throws if it cannot be built.
  const std::shared_ptr<MetaObject>& GetValue() const {
    if (refusal_.has_value()) {
      throw UnbuildableXmlOutput(*refusal_);
    }
    return builder_.GetValue();
  }

  void StartElement(std::string_view name, const XmlAttributes& attributes) override {
    Forward([&] { builder_.StartElement(name, attributes); });
  }
  void EndElement() override {
    Forward([&] { builder_.EndElement(); });
  }
  void Text(std::string_view text) override { builder_.Content(text); }
  void CData(std::string_view text) override { builder_.Content(text); }
  void Comment(std::string_view text) override { builder_.Content(text); }

 private:
  template <typename Event>
  void Forward(Event event) {
    try {
      event();
    } catch (const KestrelException& error) {
      refusal_ = error;
      builder_.Stop();
    }
  }

  XmlValueBuilder builder_;
  std::optional<KestrelException> refusal_;
};

}  // namespace

bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObject>& value) {
  ValueEvents events;
  if (!ScanXml(text, events)) {
    return false;
  }
  value = events.GetValue();
  return true;
}

}  // namespace Kestrel::AutoCli

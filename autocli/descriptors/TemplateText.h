// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "autocli/descriptors/MarkedText.h"

namespace Kestrel::AutoCli {

/// A template into which parameters are inserted, one after the other.
///
/// For each kind of marker, one operation replaces all occurrences for the parameter. For each kind
/// except the conditional, another one returns the form of the last occurrence. These operations
/// take time linear in the size of the template.
class TemplateText {
 public:
  explicit TemplateText(std::string_view text) : text_(text) {}
  explicit TemplateText(MarkedText text) : text_(std::move(text)) {}

  enum class ValuePlace { Bare, InSingleQuotes };
  /// Returns whether the last `$val{name}` is directly between single quotes; nothing if there is
  /// no such marker.
  std::optional<ValuePlace> FindValue(const std::string& name) const;
  /// `origin` is the origin of the value where it is not directly between single quotes.
  void InsertValue(const std::string& name, std::string_view value,
                   MarkedText::Origin origin = MarkedText::Origin::Value);

  /// Replaces every `$if{name,text}` by `text`, which ends at the first "}" after its first byte.
  void KeepConditionals(const std::string& name);

  struct ListForm {
    std::string separator;  // one byte or none
    bool isQuoted;
  };
  /// Returns the form of the last `$list{name,'c',true|false}`; nothing when there is none.
  std::optional<ListForm> FindList(const std::string& name) const;
  void InsertList(const std::string& name, std::string_view value,
                  MarkedText::Origin origin = MarkedText::Origin::Value);

  struct MultiListForm {
    MarkedText prefix;
    bool isQuoted;
  };
  /// Returns the form of the last `$multilist{name,prefix,true|false}`; nothing when there is none.
  std::optional<MultiListForm> FindMultiList(const std::string& name) const;
  void InsertMultiList(const std::string& name, const MarkedText& values);

  /// Removes all conditionals, together with the blocks nested in them. A "$", "{" or "}" from a
  /// value is an ordinary byte.
  void RemoveConditionals();

  const std::string& GetText() const { return text_.Bytes(); }
  const MarkedText& GetMarkedText() const { return text_; }

 private:
  MarkedText text_;
};

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "autocli/descriptors/MarkedText.h"

namespace Kestrel::AutoCli {

/// One template while parameters are put into it, one after the other.
///
/// For each marker there is a question, which tells how the parameter's last occurrence is written,
/// and an insertion, which replaces every occurrence of the parameter. Each takes time linear in
/// the size of the text.
class TemplateText {
 public:
  explicit TemplateText(std::string_view text) : text_(text) {}
  explicit TemplateText(MarkedText text) : text_(std::move(text)) {}

  enum class ValuePlace { Bare, InSingleQuotes };
  /// Where the last `$val{name}` stands; nothing when there is none.
  std::optional<ValuePlace> FindValue(const std::string& name) const;
  void InsertValue(const std::string& name, std::string_view value);

  /// Replaces every `$if{name,text}` by its text, which ends at the first "}" after its first byte.
  void KeepConditionals(const std::string& name);

  struct ListForm {
    std::string separator;  // one byte or none
    bool isQuoted;
  };
  /// How the last `$list{name,'c',true|false}` is written; nothing when there is none.
  std::optional<ListForm> FindList(const std::string& name) const;
  void InsertList(const std::string& name, std::string_view value);

  struct MultiListForm {
    MarkedText prefix;
    bool isQuoted;
  };
  /// How the last `$multilist{name,prefix,true|false}` is written; nothing when there is none.
  std::optional<MultiListForm> FindMultiList(const std::string& name) const;
  void InsertMultiList(const std::string& name, const MarkedText& values);

  /// Removes the conditionals that are left, with the braces nested in them. Braces that a value
  /// brought in do not count.
  void RemoveConditionals();

  const std::string& GetText() const { return text_.Bytes(); }
  const MarkedText& GetMarkedText() const { return text_; }

 private:
  MarkedText text_;
};

}  // namespace Kestrel::AutoCli

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Kestrel::AutoCli {

/// Whether a parameter's name may hold the byte.
inline bool IsNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

/// A text that remembers of each byte whether it came from a value. What a value holds is never
/// read as a marker of the template language.
class MarkedText {
 public:
  MarkedText() = default;
  explicit MarkedText(std::string_view text) { AppendTemplate(text); }

  void AppendTemplate(std::string_view text);
  void AppendValue(std::string_view text);
  void Append(const MarkedText& other, std::size_t position, std::size_t length);
  void Append(const MarkedText& other) { Append(other, 0, other.Size()); }
  void RemoveLast(std::size_t length);

  const std::string& Bytes() const { return bytes_; }
  std::size_t Size() const { return bytes_.size(); }
  bool IsFromValue(std::size_t position) const { return fromValue_[position] != '\0'; }

 private:
  std::string bytes_;
  std::string fromValue_;  // one byte each: 0 or 1
};

/// One template while parameters are put into it, one after the other.
///
/// For each marker there is a question, which tells how the parameter's last occurrence is written,
/// and an insertion, which replaces every occurrence of the parameter. Each takes one walk over the
/// text; the removal of conditionals takes another one for each block that a removal lays open.
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

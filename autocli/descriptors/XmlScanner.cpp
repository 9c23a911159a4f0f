// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlScanner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <system_error>
#include <unordered_set>

#include "autocli/text/StartsWith.h"
#include "autocli/text/Utf8.h"

namespace Kestrel::AutoCli {

namespace {

// Bounds that are well below the limits of the parser.
constexpr std::size_t kMaxDepth = 200;
constexpr std::size_t kMaxAttributes = 100;
constexpr std::ptrdiff_t kMaxPiece = 5000000;  // the bytes of one text, value or comment
constexpr std::size_t kMaxName = 10000;        // the bytes of a name
constexpr std::size_t kMaxNames = 4000000;     // the bytes of all different names

constexpr std::string_view kCDataBegin = "<![CDATA[";

constexpr std::uint8_t kNameStart = 1;
constexpr std::uint8_t kName = 2;
constexpr std::uint8_t kPlainInText = 4;   // stands for itself in text
constexpr std::uint8_t kPlainInValue = 8;  // stands for itself in an attribute's value
constexpr std::uint8_t kAscii = 16;        // allowed somewhere
constexpr std::uint8_t kSpace = 32;

constexpr bool Contains(std::string_view characters, int c) {
  return characters.find(static_cast<char>(c)) != std::string_view::npos;
}

constexpr std::uint8_t ClassOf(int c) {
  const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  const bool isSpace = c == ' ' || c == '\t' || c == '\n';
  const bool isAscii = (c >= ' ' && c < 0x80) || isSpace;
  std::uint8_t result = isLetter ? kNameStart | kName : 0;
  result |= (c >= '0' && c <= '9') || c == '-' || c == '.' ? kName : 0;
  result |= isSpace ? kSpace : 0;
  result |= isAscii ? kAscii : 0;
  result |= isAscii && !Contains("<&]", c) ? kPlainInText : 0;
  result |= isAscii && !Contains("<&'\"\t\n", c) ? kPlainInValue : 0;
  return result;
}

constexpr auto kClasses = [] {
  std::array<std::uint8_t, 256> classes = {};
  for (int c = 0; c < 256; ++c) {
    classes[static_cast<std::size_t>(c)] = ClassOf(c);
  }
  return classes;
}();

bool Is(std::uint8_t kind, char c) { return (kClasses[static_cast<unsigned char>(c)] & kind) != 0; }

bool IsXmlCharacter(std::uint32_t code) {
  return code == '\t' || code == '\n' || code == '\r' || (code >= ' ' && code < 0xD800) ||
         (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code < 0x110000);
}

/// Returns the number of bytes of the character beyond ASCII that `text` begins with; 0 if there is
/// none that a document can contain.
std::size_t SizeBeyondAscii(std::string_view text) {
  const Character first = text.empty() ? Character{} : FirstCharacter(text);
  return first.code >= 0x80 && IsXmlCharacter(first.code) ? first.size : 0;
}

/// Whether a document can contain all of `text` in a comment or a CDATA section.
bool AreCharacters(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = Is(kAscii, text[0]) ? 1 : SizeBeyondAscii(text);
    if (size == 0) {
      return false;
    }
    text.remove_prefix(size);
  }
  return true;
}

class Scanner {
 public:
  Scanner(std::string_view document, XmlEvents& events)
      : position_(document.data()),
        end_(document.data() + document.size()),
        hasManyNames_(document.size() > kMaxNames),
        events_(events) {}

  bool Scan() {
    TakeProlog();
    return ScanAround() && ScanRoot() && ScanAround() && position_ == end_;
  }

 private:
  std::string_view Rest() const { return {position_, static_cast<std::size_t>(end_ - position_)}; }
  char Next() const { return position_ == end_ ? '\0' : *position_; }
  std::string_view Since(const char* begin) const {
    return {begin, static_cast<std::size_t>(position_ - begin)};
  }

  bool Take(char c) {
    const bool isNext = Next() == c;  // the end counts as a NUL byte, which no caller takes
    position_ += isNext ? 1 : 0;
    return isNext;
  }

  bool Take(std::string_view text) {
    const bool isNext = StartsWith(Rest(), text);
    position_ += isNext ? text.size() : 0;
    return isNext;
  }

  void Skip(std::uint8_t kind) {
    const char* next = position_;  // fewer accesses to memory in the most frequent loop
    while (next != end_ && Is(kind, *next)) {
      ++next;
    }
    position_ = next;
  }

  /// Returns whether there was any space.
  bool SkipSpace() {
    const char* const begin = position_;
    Skip(kSpace);
    return position_ != begin;
  }

  void TakeProlog() {
    Take("\xEF\xBB\xBF");
    for (const std::string_view declaration :
         {R"(<?xml version="1.0" encoding="UTF-8"?>)", R"(<?xml version='1.0' encoding='UTF-8'?>)",
          R"(<?xml version="1.0" encoding="utf-8"?>)", R"(<?xml version='1.0' encoding='utf-8'?>)",
          R"(<?xml version="1.0"?>)", R"(<?xml version='1.0'?>)"}) {
      if (Take(declaration)) {
        return;
      }
    }
  }

  /// Scans what comes before or after the root element.
  bool ScanAround() {
    do {
      SkipSpace();
      if (!StartsWith(Rest(), "<!--")) {
        return true;
      }
    } while (ScanMarkup());
    return false;
  }

  bool ScanRoot() {
    if (Next() != '<' || !ScanStartTag()) {
      return false;
    }
    while (!open_.empty()) {
      if (!(Next() == '<' ? ScanMarkup() : ScanText())) {
        return false;
      }
    }
    return true;
  }

  bool ScanMarkup() {
    if (Take("</")) {
      return ScanEndTag();
    }
    if (!StartsWith(Rest(), "<!")) {
      return ScanStartTag();
    }
    return Take("<!--") ? ScanComment() : Take(kCDataBegin) && ScanCData();
  }

  bool ScanText() {
    std::string_view text;
    firstFree_ = 0;
    if (!ReadCharacters('<', kPlainInText, text)) {
      return false;
    }
    events_.Text(text);
    return true;
  }

  /// Comments must not contain "--".
  bool ScanComment() {
    std::string_view text;
    if (!ReadUntil("--", text) || !Take('>')) {
      return false;
    }
    events_.Comment(text);
    return true;
  }

  bool ScanCData() {
    std::string_view text;
    if (!ReadUntil("]]>", text)) {
      return false;
    }
    if (!StartsWith(Rest(), kCDataBegin)) {
      events_.CData(text);
      return true;
    }
    std::string joined(text);
    while (Take(kCDataBegin)) {
      if (!ReadUntil("]]>", text) || joined.size() > static_cast<std::size_t>(kMaxPiece)) {
        return false;
      }
      joined += text;
    }
    events_.CData(joined);
    return true;
  }

  bool ReadUntil(std::string_view end, std::string_view& text) {
    const std::size_t size = Rest().find(end);
    if (size > static_cast<std::size_t>(kMaxPiece)) {
      return false;
    }
    text = Rest().substr(0, size);
    position_ += size + end.size();
    return AreCharacters(text);
  }

  bool ScanEndTag() {
    if (!Take(open_.back())) {
      return false;
    }
    SkipSpace();
    open_.pop_back();
    events_.EndElement();
    return Take('>');
  }

  bool ScanStartTag() {
    ++position_;
    std::string_view name;
    if (!ReadName(name) || !ReadAttributes()) {
      return false;
    }
    events_.StartElement(name, attributes_);
    if (Take("/>")) {
      events_.EndElement();
      return true;
    }
    open_.push_back(name);
    return Take('>') && open_.size() <= kMaxDepth;
  }

  bool ReadName(std::string_view& name) {
    const char* const begin = position_;
    if (!Is(kNameStart, Next())) {
      return false;
    }
    Skip(kName);
    name = Since(begin);
    return name.size() <= kMaxName && (!hasManyNames_ || CountName(name));
  }

  bool CountName(std::string_view name) {
    namesSize_ += names_.insert(name).second ? name.size() : 0;
    return namesSize_ <= kMaxNames;
  }

  bool ReadAttributes() {
    attributes_.clear();
    firstFree_ = 0;
    while (SkipSpace() && Next() != '/' && Next() != '>') {
      if (!ReadAttribute()) {
        return false;
      }
    }
    return attributes_.size() <= kMaxAttributes;
  }

  bool ReadAttribute() {
    XmlAttribute attribute;
    if (!ReadName(attribute.name) || attribute.name == "xmlns" || IsKnown(attribute.name)) {
      return false;
    }
    SkipSpace();
    if (!Take('=')) {
      return false;
    }
    SkipSpace();
    const char quote = Next();
    if ((quote != '"' && quote != '\'') || attributes_.size() > kMaxAttributes) {
      return false;
    }
    ++position_;
    if (!ReadCharacters(quote, kPlainInValue, attribute.value)) {
      return false;
    }
    ++position_;
    attributes_.push_back(attribute);
    return true;
  }

  bool IsKnown(std::string_view name) const {
    return std::any_of(attributes_.begin(), attributes_.end(),
                       [name](const XmlAttribute& other) { return other.name == name; });
  }

  /// Reads text or a value up to `end`. `text` refers to the document, or to a copy if a part of it
  /// does not stand for itself.
  bool ReadCharacters(char end, std::uint8_t plain, std::string_view& text) {
    const char* const begin = position_;
    Skip(plain);
    if (Next() == end) {
      text = Since(begin);
      return position_ - begin <= kMaxPiece;
    }
    std::string& replaced = NewBuffer();
    replaced.assign(begin, position_);
    while (Next() != end) {
      if (!ReplaceCharacter(plain, replaced)) {
        return false;
      }
      const char* const run = position_;
      Skip(plain);
      replaced.append(run, position_);
    }
    text = replaced;
    return position_ - begin <= kMaxPiece;
  }

  std::string& NewBuffer() {
    if (firstFree_ == buffers_.size()) {
      buffers_.emplace_back();
    }
    return buffers_[firstFree_++];
  }

  /// Reads a character that is not in the class `plain`, and appends what it stands for.
  bool ReplaceCharacter(std::uint8_t plain, std::string& replaced) {
    const char c = Next();
    if (c == '&') {
      return ReplaceReference(replaced);
    }
    if (c == '<' || StartsWith(Rest(), "]]>")) {
      return false;
    }
    if (Is(kAscii, c)) {
      replaced += plain == kPlainInValue && (c == '\t' || c == '\n') ? ' ' : c;
      ++position_;
      return true;
    }
    const std::size_t size = SizeBeyondAscii(Rest());
    replaced.append(position_, size);
    position_ += size;
    return size != 0;
  }

  bool ReplaceReference(std::string& replaced) {
    struct Reference {
      std::string_view text;
      char character;
    };
    constexpr Reference kReferences[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}};
    for (const Reference& reference : kReferences) {
      if (Take(reference.text)) {
        replaced += reference.character;
        return true;
      }
    }
    return Take("&#") && ReplaceNumber(replaced);
  }

  bool ReplaceNumber(std::string& replaced) {
    const int base = Take('x') ? 16 : 10;
    std::uint32_t code = 0;
    const auto [after, error] = std::from_chars(position_, end_, code, base);
    position_ = after;
    if (error != std::errc() || !IsXmlCharacter(code)) {
      return false;
    }
    AppendCharacter(code, replaced);
    return Take(';');
  }

  const char* position_;
  const char* const end_;
  const bool hasManyNames_;
  XmlEvents& events_;
  std::vector<std::string_view> open_;  // the names of the elements that are open
  XmlAttributes attributes_;
  std::deque<std::string> buffers_;  // for copies of text and values
  std::size_t firstFree_ = 0;        // of the buffers
  std::unordered_set<std::string_view> names_;
  std::size_t namesSize_ = 0;
};

}  // namespace

bool ScanXml(std::string_view document, XmlEvents& events) {
  return Scanner(document, events).Scan();
}

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The grammar:
//
//   expression   = ["^"] alternatives ["$"]
//   alternatives = sequence {"|" sequence}
//   sequence     = {item {("*" | "+" | "?" | "{" m ["," [n]] "}") ["?"]}}
//   item         = byte | "." | "\" escape | "[" class "]" | "(" ["?:"] alternatives ")"

#include "tools/lint/ExpressionSyntax.h"

#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

namespace Kestrel::Lint {

namespace {

constexpr std::size_t kMaxRepeat = 1000;  // a larger repeat is not examined
constexpr std::size_t kMaxDepth = 100;

/// Thrown for anything that the parser does not understand.
struct NotUnderstood {};

ByteSet SetOf(char byte) { return ByteSet().set(static_cast<unsigned char>(byte)); }

template <typename Predicate>
ByteSet SetWhere(Predicate predicate) {
  ByteSet set;
  for (int byte = 0; byte < 128; ++byte) {
    set.set(static_cast<std::size_t>(byte), predicate(byte) != 0);
  }
  return set;
}

ByteSet WordSet() {
  return SetWhere([](int c) { return std::isalnum(c) != 0 || c == '_'; });
}
ByteSet DigitSet() {
  return SetWhere([](int c) { return std::isdigit(c); });
}
ByteSet SpaceSet() {
  return SetWhere([](int c) { return std::isspace(c); });
}

ByteSet NamedSet(std::string_view name) {
  const std::pair<std::string_view, int (*)(int)> kClasses[] = {
      {"alpha", std::isalpha}, {"alnum", std::isalnum},   {"digit", std::isdigit},
      {"upper", std::isupper}, {"lower", std::islower},   {"space", std::isspace},
      {"punct", std::ispunct}, {"xdigit", std::isxdigit}, {"blank", std::isblank},
      {"cntrl", std::iscntrl}, {"print", std::isprint},   {"graph", std::isgraph}};
  for (const auto& [known, predicate] : kClasses) {
    if (name == known) {
      return SetWhere(predicate);
    }
  }
  if (name == "word") {
    return WordSet();
  }
  throw NotUnderstood();
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  ExpressionNode Run() {
    // Anchors at both ends of the whole expression change nothing.
    Skip('^');
    if (text_.size() > position_ && text_.back() == '$' &&
        (text_.size() < 2 || text_[text_.size() - 2] != '\\')) {
      text_.remove_suffix(1);
    }
    ExpressionNode node = ReadAlternatives();
    if (position_ != text_.size()) {
      throw NotUnderstood();
    }
    return node;
  }

 private:
  bool AtEnd() const { return position_ >= text_.size(); }
  char Peek() const { return AtEnd() ? '\0' : text_[position_]; }

  bool Skip(char c) {
    const bool isThere = !AtEnd() && text_[position_] == c;
    position_ += isThere ? 1 : 0;
    return isThere;
  }

  char Take() {
    if (AtEnd()) {
      throw NotUnderstood();
    }
    return text_[position_++];
  }

  ExpressionNode ReadAlternatives() {
    if (++depth_ > kMaxDepth) {
      throw NotUnderstood();
    }
    ExpressionNode node;
    node.kind = ExpressionNode::Kind::Alternatives;
    do {
      node.children.push_back(ReadSequence());
    } while (Skip('|'));
    --depth_;
    return node;
  }

  ExpressionNode ReadSequence() {
    ExpressionNode node;
    while (!AtEnd() && Peek() != '|' && Peek() != ')') {
      node.children.push_back(ReadRepeat(ReadItem()));
    }
    return node;
  }

  ExpressionNode ReadRepeat(ExpressionNode item) {
    while (!AtEnd() && std::string_view("*+?{").find(Peek()) != std::string_view::npos) {
      ExpressionNode repeat;
      repeat.kind = ExpressionNode::Kind::Repeat;
      const char c = Take();
      repeat.least = c == '+' ? 1 : 0;
      if (c == '?') {
        repeat.most = 1;
      } else if (c == '{') {
        ReadBounds(repeat);
      }
      if (Peek() == '+') {
        throw NotUnderstood();  // a possessive repeat: it never gives up a match
      }
      Skip('?');
      repeat.children.push_back(std::move(item));
      item = std::move(repeat);
    }
    return item;
  }

  std::size_t ReadNumber() {
    std::size_t number = 0;
    if (std::isdigit(static_cast<unsigned char>(Peek())) == 0) {
      throw NotUnderstood();
    }
    while (std::isdigit(static_cast<unsigned char>(Peek())) != 0) {
      number = number * 10 + static_cast<std::size_t>(Take() - '0');
      if (number > kMaxRepeat) {
        throw NotUnderstood();
      }
    }
    return number;
  }

  void ReadBounds(ExpressionNode& repeat) {
    repeat.least = ReadNumber();
    repeat.most = repeat.least;
    if (Skip(',')) {
      repeat.most = Peek() == '}' ? std::nullopt : std::optional(ReadNumber());
    }
    if (!Skip('}') || (repeat.most && *repeat.most < repeat.least)) {
      throw NotUnderstood();
    }
  }

  ExpressionNode ReadItem() {
    const char c = Take();
    if (c == '(') {
      return ReadGroup();
    }
    if (std::string_view("^$*+?{})").find(c) != std::string_view::npos) {
      throw NotUnderstood();
    }
    ExpressionNode node;
    node.kind = ExpressionNode::Kind::Bytes;
    node.bytes = c == '.'    ? ByteSet().set()
                 : c == '['  ? ReadClass()
                 : c == '\\' ? ReadEscape()
                             : SetOf(c);
    return node;
  }

  ExpressionNode ReadGroup() {
    if (Skip('?') && !Skip(':')) {
      throw NotUnderstood();
    }
    ExpressionNode node = ReadAlternatives();
    if (!Skip(')')) {
      throw NotUnderstood();
    }
    return node;
  }

  ByteSet ReadEscape() {
    const char c = Take();
    switch (c) {
      case 'd':
        return DigitSet();
      case 'D':
        return ~DigitSet();
      case 'w':
        return WordSet();
      case 'W':
        return ~WordSet();
      case 's':
        return SpaceSet();
      case 'S':
        return ~SpaceSet();
      case 't':
        return SetOf('\t');
      case 'n':
        return SetOf('\n');
      case 'r':
        return SetOf('\r');
      default:
        break;
    }
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 ||
        std::string_view("<>`'").find(c) != std::string_view::npos) {
      throw NotUnderstood();
    }
    return SetOf(c);
  }

  ByteSet ReadClass() {
    const bool isNegated = Skip('^');
    ByteSet set;
    if (Peek() == ']') {
      throw NotUnderstood();
    }
    while (!Skip(']')) {
      set |= ReadRange();
    }
    return isNegated ? ~set : set;
  }

  // Reads a byte, an escape, a named class, or two bytes with "-" between them.
  ByteSet ReadRange() {
    const char c = Take();
    if (c == '[' && std::string_view(":.=").find(Peek()) != std::string_view::npos && !AtEnd()) {
      return ReadNamedClass();
    }
    if (c == '\\') {
      const ByteSet escape = ReadEscape();
      if (Peek() == '-' && position_ + 1 < text_.size() && text_[position_ + 1] != ']') {
        throw NotUnderstood();
      }
      return escape;
    }
    if (Peek() != '-' || position_ + 1 >= text_.size() || text_[position_ + 1] == ']') {
      return SetOf(c);
    }
    Take();
    const char last = Take();
    if (last == '\\' || last == '[' ||
        static_cast<unsigned char>(last) < static_cast<unsigned char>(c)) {
      throw NotUnderstood();
    }
    ByteSet set;
    for (int byte = static_cast<unsigned char>(c); byte <= static_cast<unsigned char>(last);
         ++byte) {
      set.set(static_cast<std::size_t>(byte));
    }
    return set;
  }

  ByteSet ReadNamedClass() {
    if (!Skip(':')) {
      throw NotUnderstood();
    }
    const std::size_t end = text_.find(":]", position_);
    if (end == std::string_view::npos) {
      throw NotUnderstood();
    }
    const std::string_view name = text_.substr(position_, end - position_);
    position_ = end + 2;
    return NamedSet(name);
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t depth_ = 0;
};

}  // namespace

std::optional<ExpressionNode> ParseExpression(const std::string& text) {
  try {
    return Parser(text).Run();
  } catch (const NotUnderstood&) {
    return std::nullopt;
  }
}

ExpressionNode LiteralExpression(const std::string& text) {
  ExpressionNode sequence;
  for (const char c : text) {
    ExpressionNode byte;
    byte.kind = ExpressionNode::Kind::Bytes;
    byte.bytes = SetOf(c);
    sequence.children.push_back(std::move(byte));
  }
  return sequence;
}

}  // namespace Kestrel::Lint

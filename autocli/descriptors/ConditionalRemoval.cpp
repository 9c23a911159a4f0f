// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What goes is told by walks over the text, one after the other until one leaves nothing out.
//
// A walk looks at each "{" from left to right. It steps into a block that is not closed. It leaves
// out a closed block together with all that stands before it from the last "$" on, if that makes a
// conditional; the block need not be the conditional's own. It steps over any other closed block.
//
// What is left out may begin inside a block that was stepped over, and then takes the end of that
// block away. The next walk finds the block open, or closed by a brace further on. Everywhere else
// it finds what the walk before found. So it goes only where a block has lost its end, and on from
// there to the first place that looks as it did.

#include "autocli/descriptors/ConditionalRemoval.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::AutoCli {
namespace {

constexpr std::size_t kNone = std::string::npos;

/// A "$", "{" or "}" of the text. Other tokens are named by their index.
struct Token {
  std::size_t position = 0;
  char byte = 0;
  /// Left out, or a "{" that nothing closes any more.
  bool isGone = false;
  /// The token behind, where walks go on.
  std::size_t next = kNone;
  /// The last "$" before.
  std::size_t dollar = kNone;
  /// The "{" that it stands in.
  std::size_t parent = kNone;
  /// The "}" of a "{", or the last token that went together with a "$".
  std::size_t partner = kNone;
  /// Whether a conditional's name and comma follow a "$".
  std::optional<bool> opens;
};

/// Where a walk has to go: from a block that has lost its end to the first token behind the loss.
struct Stretch {
  std::size_t begin;
  std::size_t end;
};

class ConditionalRemoval {
 public:
  explicit ConditionalRemoval(const MarkedText& text) : text_(text) {
    ReadTokens();
    PairAll();
  }

  MarkedText Run() {
    stretches_.push_back({0, tokens_.size()});
    while (!stretches_.empty()) {
      Walk();
    }
    return Kept();
  }

 private:
  // Tokens.

  bool IsTokenAt(std::size_t position) const {
    const char c = text_.Bytes()[position];
    return c == '$' || ((c == '{' || c == '}') && !text_.IsFromValue(position));
  }

  void ReadTokens() {
    const std::string& bytes = text_.Bytes();
    tokens_.reserve(static_cast<std::size_t>(std::count_if(
        bytes.begin(), bytes.end(), [](char c) { return c == '$' || c == '{' || c == '}'; })));
    std::size_t dollar = kNone;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (!IsTokenAt(i)) {
        continue;
      }
      Token token;
      token.position = i;
      token.byte = bytes[i];
      token.next = tokens_.size() + 1;
      token.dollar = dollar;
      if (bytes[i] == '$') {
        dollar = tokens_.size();
      }
      tokens_.push_back(token);
    }
  }

  bool IsToken(std::size_t index) const { return index < tokens_.size(); }

  /// The first token at `index` or along `link` that is not gone. Shortens the way for the next
  /// time.
  std::size_t Follow(std::size_t index, std::size_t Token::*link) {
    while (IsToken(index) && tokens_[index].isGone) {
      std::size_t& further = tokens_[index].*link;
      if (IsToken(further) && tokens_[further].isGone) {
        further = tokens_[further].*link;
      }
      index = further;
    }
    return index;
  }

  std::size_t Next(std::size_t index) {
    return tokens_[index].next = Follow(tokens_[index].next, &Token::next);
  }

  std::size_t LastDollarBefore(std::size_t index) {
    return tokens_[index].dollar = Follow(tokens_[index].dollar, &Token::dollar);
  }

  // Blocks.

  void PairAll() {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; IsToken(i); ++i) {
      if (!Pair(i, open)) {
        unmatched_.push_back(i);
      }
    }
  }

  /// Finds the ends anew for a block that has lost its own and for those in it.
  void PairAgain(std::size_t block) {
    std::vector<std::size_t> open = {block};
    tokens_[block].partner = kNone;
    for (std::size_t i = Next(block); !open.empty() && i <= unmatched_.back(); i = Next(i)) {
      Pair(i, open);
    }
  }

  /// False for a "}" that closes none of the open blocks.
  bool Pair(std::size_t index, std::vector<std::size_t>& open) {
    Token& token = tokens_[index];
    token.parent = open.empty() ? kNone : open.back();
    if (token.byte == '{') {
      token.partner = kNone;
      open.push_back(index);
    } else if (token.byte == '}') {
      if (open.empty()) {
        return false;
      }
      token.parent = tokens_[open.back()].parent;
      tokens_[open.back()].partner = index;
      open.pop_back();
    }
    return true;
  }

  /// The "}" of a block, or none. A block that is not closed now never will be: the braces that
  /// could close it have gone or have closed others.
  std::size_t CloseOf(std::size_t block) {
    std::size_t& close = tokens_[block].partner;
    if (close != kNone && tokens_[close].isGone) {
      close = kNone;
      while (!unmatched_.empty() && tokens_[unmatched_.back()].isGone) {
        unmatched_.pop_back();
      }
      if (!unmatched_.empty() && unmatched_.back() > block) {
        PairAgain(block);
      }
    }
    if (close == kNone) {
      tokens_[block].isGone = true;
      while (!unmatched_.empty() && unmatched_.back() > block) {
        unmatched_.pop_back();
      }
    }
    return close;
  }

  // Walks.

  void Walk() {
    std::vector<Stretch> stretches;
    stretches.swap(stretches_);
    std::size_t position = 0;
    for (const Stretch& stretch : stretches) {
      position = WalkFrom(std::max(position, stretch.begin), stretch.end);
    }
  }

  /// Walks to `end` and on until nothing can differ from the walk before. Returns where it ended.
  std::size_t WalkFrom(std::size_t index, std::size_t end) {
    bool isSettled = false;
    while (IsToken(index) && !isSettled) {
      const std::size_t close = tokens_[index].byte == '{' ? CloseOf(index) : kNone;
      if (close == kNone) {
        isSettled = index >= end && tokens_[index].byte == '$';
        index = Next(index);
        continue;
      }
      const std::size_t dollar = LastDollarBefore(index);
      if (dollar != kNone && OpensConditional(dollar, index, close)) {
        index = LeaveOut(dollar, close);
      } else {
        // A conditional without a text ends at its own block, and yet may open at the next one.
        isSettled = index >= end && (dollar == kNone || Next(dollar) != index);
        index = Next(close);
      }
    }
    return index;
  }

  /// Returns the token behind.
  std::size_t LeaveOut(std::size_t dollar, std::size_t close) {
    std::size_t broken = kNone;
    for (std::size_t block = tokens_[dollar].parent; IsClosed(block);
         block = tokens_[block].parent) {
      broken = block;
    }
    for (std::size_t index = dollar; index <= close;) {
      const std::size_t next = Next(index);
      tokens_[index].isGone = true;
      index = next;
    }
    tokens_[dollar].partner = close;
    const std::size_t behind = Next(close);
    NoteLoss(dollar, behind, broken);
    return behind;
  }

  bool IsClosed(std::size_t block) const {
    return block != kNone && tokens_[block].partner != kNone &&
           !tokens_[tokens_[block].partner].isGone;
  }

  /// What the next walk has to look at: the tokens from `begin` to `behind` have gone.
  void NoteLoss(std::size_t begin, std::size_t behind, std::size_t broken) {
    while (!stretches_.empty() && stretches_.back().begin >= begin) {
      stretches_.pop_back();
    }
    if (!stretches_.empty() && stretches_.back().end >= begin) {
      stretches_.back().end = behind;
    }
    if (broken != kNone) {
      stretches_.push_back({broken, behind});
    }
  }

  // Conditionals.

  /// Goes over the bytes of the text that are left, beginning behind a "$".
  class Reader {
   public:
    Reader(const ConditionalRemoval& removal, std::size_t dollar)
        : removal_(removal), token_(dollar), position_(removal.tokens_[dollar].position) {
      Advance();
    }

    std::size_t Position() const { return position_; }
    char Byte() const { return removal_.text_.Bytes()[position_]; }

    void Advance() {
      const std::vector<Token>& tokens = removal_.tokens_;
      token_ += tokens[token_].position == position_ ? 1 : 0;
      ++position_;
      while (removal_.IsToken(token_) && tokens[token_].position == position_ &&
             tokens[token_].byte == '$' && tokens[token_].isGone) {
        position_ = tokens[tokens[token_].partner].position + 1;
        token_ = tokens[token_].partner + 1;
      }
    }

   private:
    const ConditionalRemoval& removal_;
    std::size_t token_;  // the first at the position or behind it
    std::size_t position_;
  };

  /// Whether the text from a "$" to the end of the block that follows it is a conditional.
  bool OpensConditional(std::size_t dollar, std::size_t block, std::size_t close) {
    if (text_.IsFromValue(tokens_[dollar].position)) {
      return false;
    }
    Reader reader(*this, dollar);
    for (const char c : std::string_view("if")) {
      if (reader.Byte() != c) {
        return false;
      }
      reader.Advance();
    }
    const std::size_t brace = tokens_[block].position;
    if (reader.Position() == brace) {
      const std::size_t end = tokens_[close].position;
      return ReadNameAndComma(reader, end) && reader.Position() < end;
    }
    std::optional<bool>& opens = tokens_[dollar].opens;
    if (!opens.has_value()) {
      opens = reader.Byte() == '{' && !text_.IsFromValue(reader.Position()) &&
              ReadNameAndComma(reader, brace);
    }
    return *opens;
  }

  /// Reads a "{", a name and a comma that stand before `end`.
  static bool ReadNameAndComma(Reader& reader, std::size_t end) {
    reader.Advance();
    const std::size_t name = reader.Position();
    while (reader.Position() < end && IsNameByte(reader.Byte())) {
      reader.Advance();
    }
    const bool isComma =
        reader.Position() > name && reader.Position() < end && reader.Byte() == ',';
    reader.Advance();
    return isComma;
  }

  MarkedText Kept() const {
    MarkedText kept;
    std::size_t position = 0;
    for (std::size_t i = 0; IsToken(i); ++i) {
      const Token& token = tokens_[i];
      if (token.byte == '$' && token.isGone) {
        kept.Append(text_, position, token.position - position);
        position = tokens_[token.partner].position + 1;
        i = token.partner;
      }
    }
    kept.Append(text_, position, text_.Size() - position);
    return kept;
  }

  const MarkedText& text_;
  std::vector<Token> tokens_;
  std::vector<std::size_t> unmatched_;  // each "}" that closed nothing at first
  std::vector<Stretch> stretches_;      // for the next walk, from left to right
};

}  // namespace

MarkedText WithoutConditionals(const MarkedText& text) { return ConditionalRemoval(text).Run(); }

}  // namespace Kestrel::AutoCli

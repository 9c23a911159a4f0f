// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Scanner.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "autocli/text/Utf8.h"

namespace Kestrel::Lint {

namespace {

constexpr std::string_view kSpaces = " \t\r\n";

// Appends what a reference such as "lt" or "#x41" stands for.
void AppendReference(std::string_view name, std::string& text) {
  constexpr std::pair<std::string_view, char> kEntities[] = {
      {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
  for (const auto& [entity, character] : kEntities) {
    if (name == entity) {
      text += character;
      return;
    }
  }
  const bool isHexadecimal = name.size() > 1 && name[1] == 'x';
  const std::string digits(name.substr(isHexadecimal ? 2 : 1));
  const unsigned long code = std::strtoul(digits.c_str(), nullptr, isHexadecimal ? 16 : 10);
  AutoCli::AppendCharacter(static_cast<char32_t>(code), text);
}

// Decodes references and line ends. `begin` is the offset of `raw` in the document.
Piece Decode(Piece::Kind kind, std::string_view raw, std::size_t begin) {
  Piece piece;
  piece.kind = kind;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const std::size_t start = i;
    if (raw[i] == '&' && kind == Piece::Kind::Text) {
      const std::size_t end = raw.find(';', i);
      AppendReference(raw.substr(i + 1, end - i - 1), piece.text);
      i = end;
    } else if (raw[i] == '\r') {
      piece.text += '\n';
      i += i + 1 < raw.size() && raw[i + 1] == '\n' ? 1 : 0;
    } else {
      piece.text += raw[i];
    }
    piece.offsets.resize(piece.text.size(), begin + start);
  }
  return piece;
}

std::string_view WithoutPrefix(std::string_view name) {
  const std::size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string_view Trim(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kSpaces), text.size()));
  text.remove_suffix(text.size() - text.find_last_not_of(kSpaces) - 1);
  return text;
}

}  // namespace

bool Scanner::StartsWith(std::string_view what) const {
  return text_.compare(position_, what.size(), what) == 0;
}

std::string_view Scanner::TakeUntil(std::string_view end) {
  const std::size_t found = std::min(text_.find(end, position_), text_.size());
  const std::string_view taken = text_.substr(position_, found - position_);
  position_ = std::min(found + end.size(), text_.size());
  return taken;
}

std::unique_ptr<Element> Scanner::Run() {
  while (position_ < text_.size()) {
    if (text_[position_] == '<') {
      ScanMarkup();
    } else {
      ScanText();
    }
  }
  return std::move(root_);
}

void Scanner::ScanMarkup() {
  constexpr std::string_view kCData = "<![CDATA[";
  if (StartsWith("<!--")) {
    ScanComment();
  } else if (StartsWith(kCData)) {
    position_ += kCData.size();
    AddPiece(Piece::Kind::CData, TakeUntil("]]>"));
  } else if (StartsWith("<?")) {
    AddPiece(Piece::Kind::Instruction, TakeUntil("?>"));
  } else {
    ScanTag();
  }
}

void Scanner::ScanTag() {
  if (!StartsWith("</")) {
    ScanStartTag();
    return;
  }
  TakeUntil(">");
  open_ = open_ == nullptr ? nullptr : const_cast<Element*>(open_->parent);
}

void Scanner::ScanStartTag() {
  auto element = std::make_unique<Element>();
  element->position = positionOf_(position_);
  ++position_;
  const std::size_t end = text_.find_first_of(" \t\r\n/>", position_);
  element->name = WithoutPrefix(text_.substr(position_, end - position_));
  position_ = end;
  element->parent = open_;
  element->suppressions = std::exchange(pending_, {});
  ScanAttributes(*element);
  const bool isEmpty = StartsWith("/");
  TakeUntil(">");
  Element* const raw = element.get();
  if (open_ != nullptr) {
    open_->children.push_back(std::move(element));
  } else {
    root_ = std::move(element);
  }
  open_ = isEmpty ? open_ : raw;
}

void Scanner::ScanAttributes(Element& element) {
  while (true) {
    position_ = text_.find_first_not_of(kSpaces, position_);
    if (position_ == std::string_view::npos || text_[position_] == '>' || text_[position_] == '/') {
      return;
    }
    const std::string_view name = Trim(TakeUntil("="));
    position_ = text_.find_first_of("\"'", position_);
    const char quote = text_[position_++];
    const std::size_t begin = position_;
    const std::string_view value = TakeUntil(std::string_view(&quote, 1));
    element.attributes.push_back({std::string(name), Decode(Piece::Kind::Text, value, begin).text});
  }
}

void Scanner::ScanText() {
  const std::size_t end = std::min(text_.find('<', position_), text_.size());
  AddPiece(Piece::Kind::Text, text_.substr(position_, end - position_));
  position_ = end;
}

void Scanner::ScanComment() {
  const std::size_t begin = position_;
  position_ += 4;
  const std::string_view comment = TakeUntil("-->");
  NoteSuppression(comment, begin);
  AddPiece(Piece::Kind::Comment, comment);
}

void Scanner::AddPiece(Piece::Kind kind, std::string_view raw) {
  if (open_ == nullptr) {
    return;
  }
  const auto begin = static_cast<std::size_t>(raw.data() - text_.data());
  open_->pieces.push_back(Decode(kind, raw, begin));
}

// A comment that suppresses rules has the form "vexil-lint disable=RULE[,RULE]...: reason".
void Scanner::NoteSuppression(std::string_view comment, std::size_t begin) {
  constexpr std::string_view kOpening = "vexil-lint disable=";
  comment = Trim(comment);
  if (comment.substr(0, kOpening.size()) != kOpening) {
    return;
  }
  comment.remove_prefix(kOpening.size());
  const std::size_t colon = std::min(comment.find(':'), comment.size());
  auto suppression = std::make_shared<Suppression>();
  suppression->position = positionOf_(begin);
  suppression->hasReason = !Trim(comment.substr(std::min(colon + 1, comment.size()))).empty();
  std::string_view rules = comment.substr(0, colon);
  while (!rules.empty()) {
    const std::size_t comma = std::min(rules.find(','), rules.size());
    suppression->rules.emplace_back(Trim(rules.substr(0, comma)));
    rules.remove_prefix(std::min(comma + 1, rules.size()));
  }
  pending_.push_back(suppression);
  suppressions.push_back(std::move(suppression));
}

}  // namespace Kestrel::Lint

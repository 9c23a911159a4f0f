// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/lint/Document.h"

namespace Kestrel::Lint {

/// Reads the elements of a document with their places. The document must be well-formed UTF-8
/// without a document type; a parser has to check that first.
class Scanner {
 public:
  using PositionOf = std::function<Position(std::size_t)>;

  Scanner(std::string_view text, PositionOf positionOf)
      : text_(text), positionOf_(std::move(positionOf)) {}

  /// Returns the root element.
  std::unique_ptr<Element> Run();

  /// The comments that suppress rules, in the order of the document.
  std::vector<std::shared_ptr<Suppression>> suppressions;

 private:
  bool StartsWith(std::string_view what) const;
  /// Returns what comes before `end` and skips both.
  std::string_view TakeUntil(std::string_view end);
  void ScanMarkup();
  void ScanTag();
  void ScanStartTag();
  void ScanAttributes(Element& element);
  void ScanText();
  void ScanComment();
  void AddPiece(Piece::Kind kind, std::string_view raw);
  void NoteSuppression(std::string_view comment, std::size_t begin);

  std::string_view text_;
  PositionOf positionOf_;
  std::size_t position_ = 0;
  std::unique_ptr<Element> root_;
  Element* open_ = nullptr;  // the innermost open element
  std::vector<std::shared_ptr<Suppression>> pending_;
};

}  // namespace Kestrel::Lint

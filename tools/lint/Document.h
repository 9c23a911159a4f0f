// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <climits>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/lint/Finding.h"

struct _xmlDoc;
struct _xmlNode;

namespace Kestrel::Lint {

struct Attribute {
  std::string name;
  std::string value;
};

/// A run of text, a CDATA section, a comment or a processing instruction.
struct Piece {
  enum class Kind { Text, CData, Comment, Instruction };

  Kind kind = Kind::Text;
  std::string text;
  /// For each byte of `text`, the offset in the file of the byte that it comes from.
  std::vector<std::size_t> offsets;

  bool IsText() const { return kind == Kind::Text || kind == Kind::CData; }
  bool HasWords() const { return text.find_first_not_of(" \t\r\n") != std::string::npos; }
};

/// A comment that suppresses rules for the element after it.
struct Suppression {
  Position position;
  std::vector<std::string> rules;
  bool hasReason = false;
  std::set<std::string> used;  // the rules that it has suppressed
};

/// An element of a document, with its place.
struct Element {
  std::string name;  // without a prefix
  Position position;
  std::vector<Attribute> attributes;
  std::vector<std::unique_ptr<Element>> children;
  std::vector<Piece> pieces;  // what is directly in the element, without its children
  std::vector<std::shared_ptr<Suppression>> suppressions;
  const Element* parent = nullptr;
  /// The same element in the tree of libxml2, for Kestrel's functions that take a node.
  _xmlNode* node = nullptr;

  /// Returns the value of an attribute as the loader sees it: a missing one is empty.
  const std::string& Get(std::string_view attribute) const;
  bool Has(std::string_view attribute) const;
  /// Returns the first child with this name, or null.
  const Element* Find(std::string_view child) const;
  std::vector<const Element*> FindAll(std::string_view child) const;
  /// Returns the piece that the loader uses as the content of the element: the last one. Null if
  /// there is none.
  const Piece* GetContentPiece() const;
  /// Returns the content as the loader sees it.
  std::string GetContent() const;
};

/// While an object of this class exists, the parser prints no diagnostics on standard error.
class SilentParser {
 public:
  SilentParser();
  SilentParser(const SilentParser&) = delete;
  SilentParser& operator=(const SilentParser&) = delete;
  ~SilentParser();

 private:
  void (*const handler_)(void* context, const char* format, ...);
  void* const context_;
};

/// A parsed file.
class Document {
 public:
  /// Why a file has no elements to examine, and where.
  struct Problem {
    const char* rule;
    Position position;
    std::string what;
    /// Whether the loader may still accept the file.
    bool mayLoad = false;
  };

  /// The most bytes that can be parsed.
  static constexpr std::size_t kMaxSize = INT_MAX;

  explicit Document(std::string text);
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document();

  /// Null when there is a problem.
  const Element* GetRoot() const { return root_.get(); }
  const std::optional<Problem>& GetProblem() const { return problem_; }
  const std::vector<std::shared_ptr<Suppression>>& GetSuppressions() const { return suppressions_; }

  /// Returns the place of a byte of the text.
  Position PositionOf(std::size_t offset) const;

 private:
  friend class Scanner;

  void Parse();

  const std::string text_;
  std::vector<std::size_t> lineStarts_;
  _xmlDoc* tree_ = nullptr;
  std::unique_ptr<Element> root_;
  std::vector<std::shared_ptr<Suppression>> suppressions_;
  std::optional<Problem> problem_;
};

}  // namespace Kestrel::Lint

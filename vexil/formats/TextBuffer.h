// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "autocli/text/PutPiece.h"

namespace Kestrel::Formats {

using AutoCli::Decimal;
using AutoCli::PutPiece;
using AutoCli::Spaces;

/// Keeps output in memory until it is known that all of it can be printed.
///
/// The memory consists of blocks of growing size, so appending never copies earlier output.
class TextBuffer {
 public:
  /// Appends a string, a byte, Spaces or a Decimal.
  template <typename Piece>
  void Append(const Piece& piece) {
    AppendAll(piece);
  }

  /// Appends pieces in order. Faster than one call for each, because there is a single check for
  /// room.
  template <typename... Pieces>
  void AppendAll(const Pieces&... pieces) {
    using AutoCli::MaxBytes;
    char* place = Prepare((MaxBytes(pieces) + ...));
    ((place = PutPiece(pieces, place)), ...);
    Commit(place);
  }

  /// Makes room for `count` bytes, and for what PutPiece overwrites after them. Returns where to
  /// write them.
  char* Prepare(std::size_t count) {
    if (Room() < count + AutoCli::kPieceSlack) {
      AddBlock(count + AutoCli::kPieceSlack);
    }
    return end_;
  }

  /// Appends the bytes between the place that `Prepare` returned and `end`.
  void Commit(char* end) { end_ = end; }

  /// Removes the last byte, which the last operation must have appended.
  void RemoveLast() { --end_; }

  /// Writes the output to `out` and flushes it. Stops as soon as the stream fails.
  void WriteTo(std::ostream& out) const;

  /// Returns a copy of the output.
  std::string ToString() const;

  /// Removes all output.
  void Clear();

 private:
  /// Frees a block of `capacity` bytes.
  struct Free {
    std::size_t capacity;

    void operator()(char* bytes) const { std::allocator<char>().deallocate(bytes, capacity); }
  };

  /// The bytes of a block. Not an array: with immediate binding, the dynamic linker would look up
  /// the operators that allocate and release arrays at each start.
  using Bytes = std::unique_ptr<char, Free>;

  struct Block {
    Bytes bytes;
    std::size_t size;
  };

  static constexpr std::size_t kFirstBlock = std::size_t{4} << 10U;
  static constexpr std::size_t kMaxBlock = std::size_t{1} << 20U;

  std::size_t Room() const { return static_cast<std::size_t>(limit_ - end_); }
  std::size_t Used() const { return static_cast<std::size_t>(end_ - block_.get()); }

  template <typename Use>
  void ForEachPart(const Use& use) const;

  void AddBlock(std::size_t atLeast);

  std::vector<Block> full_;
  Bytes block_;
  char* end_ = nullptr;    // of the text in `block_`
  char* limit_ = nullptr;  // of `block_`
};

}  // namespace Kestrel::Formats

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "autocli/text/Decimal.h"
#include "autocli/text/EscapeTable.h"
#include "autocli/text/ShortCopy.h"

namespace Kestrel::AutoCli {

// The pieces that output consists of: bytes, strings, Decimals, and the following. A writer makes
// room for MaxBytes of all pieces that it is to append, and for kPieceSlack, and then puts one
// after the other.

/// A number of spaces.
struct Spaces {
  std::size_t count;
};

/// A string that is written with its bytes replaced according to `table`.
struct Escaped {
  std::string_view text;
  const EscapeTable& table;
};

/// Up to this many bytes after a piece may be overwritten.
inline constexpr std::size_t kPieceSlack = 32;

/// Returns an upper bound of the bytes that a piece takes. A number of spaces that no memory has
/// room for is cut, so that the bounds of several pieces can be added without an overflow.
inline std::size_t MaxBytes(char /*byte*/) { return 1; }
inline std::size_t MaxBytes(std::string_view text) { return text.size(); }
inline std::size_t MaxBytes(Decimal /*number*/) { return Decimal::kMaxLength; }
inline std::size_t MaxBytes(Spaces spaces) {
  return std::min<std::size_t>(spaces.count, PTRDIFF_MAX / 16);
}
inline std::size_t MaxBytes(const Escaped& escaped) {
  return escaped.text.size() * EscapeTable::kMaxLength;
}

/// Writes a piece to `place`, where there must be room, and returns its end.
inline char* PutPiece(char byte, char* place) {
  *place = byte;
  return place + 1;
}
inline char* PutPiece(std::string_view text, char* place) {
  CopyBytes(place, text.data(), text.size());
  return place + text.size();
}
inline char* PutPiece(Decimal number, char* place) { return number.WriteTo(place); }
inline char* PutPiece(Spaces spaces, char* place) {
  if (spaces.count <= kPieceSlack) {
    std::memset(place, ' ', kPieceSlack);  // a fixed size needs no function call
  } else {
    std::memset(place, ' ', spaces.count);
  }
  return place + spaces.count;
}
inline char* PutPiece(const Escaped& escaped, char* place) {
  return escaped.table.Escape(escaped.text, place);
}

}  // namespace Kestrel::AutoCli

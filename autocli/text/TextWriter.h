// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string_view>

#include "autocli/text/PutPiece.h"

namespace Kestrel::AutoCli {

/// Collects output in a buffer and writes it to a stream in large pieces.
///
/// The stream's width, fill, flags and locale have no effect, because its formatting operators are
/// not used. Call `Finish` or `Drain` at the end. If neither is called, because of an exception,
/// the destructor writes what was appended, so that the user sees how far the output came. Once the
/// stream has failed, all further output is dropped; long loops should check `HasFailed`.
///
/// The object contains the buffer of 32 KiB. Put it on the stack, but not into a recursive
/// function.
class TextWriter {
 public:
  /// Writes to `out`, which must outlive the writer. Call `Drain` before other code writes to
  /// `out`.
  explicit TextWriter(std::ostream& out);

  /// Calls `Finish`, unless `Drain` or `Finish` was called and the buffer is empty. Ignores
  /// exceptions of the stream.
  ~TextWriter();

  TextWriter(const TextWriter&) = delete;
  TextWriter& operator=(const TextWriter&) = delete;

  void Append(char byte) {
    if (used_ == kCapacity) {
      Send();
    }
    buffer_[used_++] = byte;
  }

  void Append(std::string_view text) {
    if (text.size() > kCapacity - used_) {
      AppendLong(text);
      return;
    }
    PutPiece(text, buffer_ + used_);
    used_ += text.size();
  }

  /// Appends strings, bytes, Spaces, Decimals and Escaped strings in order. Faster than one call
  /// for each: there is a single check for room, and the position stays in a register.
  template <typename... Pieces>
  void AppendAll(const Pieces&... pieces) {
    if ((MaxBytes(pieces) + ...) > kCapacity - used_) {
      (AppendOne(pieces), ...);
      return;
    }
    char* place = buffer_ + used_;
    ((place = PutPiece(pieces, place)), ...);
    used_ = static_cast<std::size_t>(place - buffer_);
  }

  void Repeat(char byte, std::size_t count) {
    if (count > kPieceSlack || count > kCapacity - used_) {
      RepeatLong(byte, count);
      return;
    }
    // A fixed size needs no function call. The bytes after `count` are overwritten or never sent.
    std::memset(buffer_ + used_, byte, kPieceSlack);
    used_ += count;
  }

  /// Appends `text`, then spaces up to a total of `width` bytes. A longer string is not cut.
  void AppendLeft(std::string_view text, std::size_t width) {
    Append(text);
    if (text.size() < width) {
      Repeat(' ', width - text.size());
    }
  }

  /// Writes the contents of the buffer to the stream without flushing it. More may be appended.
  void Drain();

  /// Drains the buffer and flushes the stream. A formatter does this once, at the end.
  void Finish();

  /// Returns whether the stream had failed when the buffer was last written to it.
  bool HasFailed() const { return failed_; }

 private:
  static constexpr std::size_t kCapacity = 32 * 1024;
  static constexpr std::size_t kMaxEscapedAtOnce = 1024;

  void AppendOne(char byte) { Append(byte); }
  void AppendOne(std::string_view text) { Append(text); }
  void AppendOne(Spaces spaces) { Repeat(' ', spaces.count); }
  void AppendOne(Decimal number) {
    used_ = static_cast<std::size_t>(PutPiece(number, Reserve(MaxBytes(number))) - buffer_);
  }
  void AppendOne(const Escaped& escaped);

  /// Makes room for `count` bytes, at most kCapacity, and returns where they go.
  char* Reserve(std::size_t count) {
    if (count > kCapacity - used_) {
      Send();
    }
    return buffer_ + used_;
  }

  void AppendLong(std::string_view text);
  void RepeatLong(char byte, std::size_t count);
  void Send();
  void WriteOut(std::string_view text);

  std::ostream& out_;
  std::size_t used_ = 0;
  bool failed_;
  bool isDrained_ = false;
  char buffer_[kCapacity + kPieceSlack];
};

}  // namespace Kestrel::AutoCli

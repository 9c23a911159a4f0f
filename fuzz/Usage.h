// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <ctime>

namespace Kestrel::Fuzz {

/// Counts an allocation of the program's operator new.
void CountAllocation(std::size_t size);

/// Limits the memory and the processor time that the code between the construction of this object
/// and `Check` may use, in proportion to the code's input and output. For the memory, the program's
/// operator new counts bytes, including those of memory that is released later. The memory of
/// libxml2 is not included. What a program makes once, such as a static object, must exist before
/// the construction.
class Usage {
 public:
  explicit Usage(std::size_t inputSize);

  /// Requires that at most `kMaxBytesPerByte` bytes and `kMaxNanosecondsPerByte` were used for each
  /// byte of the input and of an output, in addition to `kMaxBytes` and `kMaxNanoseconds`, which
  /// any input may use.
  void Check(std::size_t outputSize = 0) const;

 private:
  // A row for a short line takes a few hundred bytes, and a growing vector takes three times its
  // final size.
  static constexpr std::size_t kMaxBytesPerByte = 1024;
  static constexpr std::size_t kMaxBytes = std::size_t{256} << 10;
  static constexpr long kMaxNanosecondsPerByte = 50'000;
  static constexpr long kMaxNanoseconds = 50'000'000;

  std::size_t inputSize_;
  std::size_t bytesBefore_;
  long nanosecondsBefore_;
};

}  // namespace Kestrel::Fuzz

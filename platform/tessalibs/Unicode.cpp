// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kestrel/platform/TessaLibs.h"

// Strict UTF-8, whatever encoding is requested: no surrogates, no overlong sequences, nothing above
// U+10FFFF. A byte that does not begin a valid sequence is invalid by itself; the next byte is
// checked independently.

namespace {

using Byte = unsigned char;

struct Bytes {
  const Byte* first;
  std::size_t count;
};

// What a lead byte requires: the length of the sequence and the range of the second byte. Any later
// bytes are 0x80 to 0xBF.
struct Sequence {
  std::size_t length;
  Byte secondFirst;
  Byte secondLast;
};

Bytes BytesOf(const void* buffer, ssize_t length) {
  const Byte* const first = static_cast<const Byte*>(buffer);
  if (first == nullptr) {
    return {nullptr, 0};
  }
  return {first, length < 0 ? std::strlen(static_cast<const char*>(buffer))
                            : static_cast<std::size_t>(length)};
}

Sequence SequenceOf(Byte lead) {
  if (lead >= 0xC2 && lead <= 0xDF) {
    return {2, 0x80, 0xBF};
  }
  if (lead >= 0xE0 && lead <= 0xEF) {
    const Byte first = lead == 0xE0 ? 0xA0 : 0x80;
    const Byte last = lead == 0xED ? 0x9F : 0xBF;
    return {3, first, last};
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const Byte first = lead == 0xF0 ? 0x90 : 0x80;
    const Byte last = lead == 0xF4 ? 0x8F : 0xBF;
    return {4, first, last};
  }
  return {0, 0, 0};
}

// Most text is ASCII, so eight bytes are checked in one step.
constexpr std::size_t kGroup = sizeof(std::uint64_t);
constexpr std::uint64_t kHighBits = 0x8080808080808080;

bool BeginsWithAsciiGroup(Bytes bytes) {
  if (bytes.count < kGroup) {
    return false;
  }
  std::uint64_t group = 0;
  std::memcpy(&group, bytes.first, kGroup);
  return (group & kHighBits) == 0;
}

// Returns the length of the ASCII group or valid sequence at the beginning, 0 when there is
// neither.
std::size_t ValidLength(Bytes bytes) {
  if (BeginsWithAsciiGroup(bytes)) {
    return kGroup;
  }
  if (bytes.first[0] < 0x80) {
    return 1;
  }
  const Sequence sequence = SequenceOf(bytes.first[0]);
  if (sequence.length == 0 || sequence.length > bytes.count ||
      bytes.first[1] < sequence.secondFirst || bytes.first[1] > sequence.secondLast) {
    return 0;
  }
  for (std::size_t index = 2; index < sequence.length; ++index) {
    if (bytes.first[index] < 0x80 || bytes.first[index] > 0xBF) {
      return 0;
    }
  }
  return sequence.length;
}

void Advance(Bytes& bytes, std::size_t length) {
  bytes.first += length;
  bytes.count -= length;
}

char* WriteEscape(char* out, Byte byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  *out++ = '\\';
  *out++ = 'x';
  *out++ = kDigits[byte >> 4];
  *out++ = kDigits[byte & 0x0F];
  return out;
}

constexpr std::size_t kEscapeLength = 4;

std::size_t EscapedLength(Bytes bytes) {
  std::size_t total = 0;
  while (bytes.count > 0) {
    const std::size_t length = ValidLength(bytes);
    total += length == 0 ? kEscapeLength : length;
    Advance(bytes, length == 0 ? 1 : length);
  }
  return total;
}

}  // namespace

bool Unicode_IsBufferValid(const void* buffer, ssize_t length, int) {
  Bytes bytes = BytesOf(buffer, length);
  while (bytes.count > 0) {
    const std::size_t valid = ValidLength(bytes);
    if (valid == 0) {
      return false;
    }
    Advance(bytes, valid);
  }
  return true;
}

char* Unicode_EscapeBuffer(const void* buffer, ssize_t length, int) {
  Bytes bytes = BytesOf(buffer, length);
  char* const text = static_cast<char*>(std::malloc(EscapedLength(bytes) + 1));
  if (text == nullptr) {
    return nullptr;
  }
  char* out = text;
  while (bytes.count > 0) {
    const std::size_t valid = ValidLength(bytes);
    if (valid == 0) {
      out = WriteEscape(out, bytes.first[0]);
      Advance(bytes, 1);
      continue;
    }
    std::memcpy(out, bytes.first, valid);
    out += valid;
    Advance(bytes, valid);
  }
  *out = '\0';
  return text;
}

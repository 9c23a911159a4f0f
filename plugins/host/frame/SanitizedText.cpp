// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/SanitizedText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "plugins/host/frame/HexDigits.h"

namespace Kestrel::Host {
namespace {

bool IsControl(unsigned char byte) { return byte < 0x20 || byte == 0x7f; }

// Whether the bytes are a character from U+0080 to U+009F. Some terminals interpret these
// characters as commands.
bool IsControlPair(unsigned char first, unsigned char second) {
  return first == 0xc2 && second >= 0x80 && second <= 0x9f;
}

void AppendEscaped(unsigned char byte, std::string& text) {
  text += "\\x";
  AppendHexDigits(byte, text);
}

constexpr std::uint64_t kOnes = 0x0101010101010101;

// Whether one of the eight bytes is less than `bound`, which is at most 128. The subtraction for
// such a byte borrows from the next higher byte, which may then look too small as well. That does
// not change the result.
bool HasLess(std::uint64_t bytes, std::uint64_t bound) {
  return ((bytes - kOnes * bound) & ~bytes & (kOnes << 7)) != 0;
}

// Returns a value other than 0 if one of the bytes is not printable ASCII. The subtraction sets the
// highest bit of a byte below 0x20, and the addition sets it in 0x7f. In a higher byte, the bit is
// already set. Only such a byte can borrow from or carry into another one, so printable bytes alone
// never set a bit.
std::uint64_t UnusualBits(std::uint64_t bytes) {
  return ((bytes - kOnes * 0x20) | (bytes + kOnes) | bytes) & (kOnes << 7);
}

// Fast path: most strings are printable ASCII, which is also valid UTF-8.
bool IsPrintableAscii(std::string_view text) {
  std::uint64_t bytes = 0;
  if (text.size() < sizeof(bytes)) {
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return letter >= 0x20 && letter < 0x7f; });
  }
  std::uint64_t unusual = 0;
  for (std::size_t at = 0; at + sizeof(bytes) <= text.size(); at += sizeof(bytes)) {
    std::memcpy(&bytes, text.data() + at, sizeof(bytes));
    unusual |= UnusualBits(bytes);
  }
  std::memcpy(&bytes, text.data() + text.size() - sizeof(bytes), sizeof(bytes));
  return (unusual | UnusualBits(bytes)) == 0;
}

bool HasByte(std::uint64_t bytes, std::uint64_t byte) { return HasLess(bytes ^ (kOnes * byte), 1); }

// Fast path: most strings contain neither a control character nor the byte 0xc2, with which the
// characters U+0080 to U+009F begin.
bool MayNeedEscapes(std::string_view text) {
  for (std::uint64_t bytes = 0; text.size() >= sizeof(bytes); text.remove_prefix(sizeof(bytes))) {
    std::memcpy(&bytes, text.data(), sizeof(bytes));
    if (HasLess(bytes, 0x20) || HasByte(bytes, 0x7f) || HasByte(bytes, 0xc2)) {
      return true;
    }
  }
  return std::any_of(text.begin(), text.end(), [](char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    return IsControl(byte) || byte == 0xc2;
  });
}

std::string EscapeControls(std::string_view text, std::string_view kept) {
  if (!MayNeedEscapes(text)) {
    return std::string(text);
  }
  std::string safe;
  safe.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (IsControl(byte) && kept.find(text[i]) == std::string_view::npos) {
      AppendEscaped(byte, safe);
    } else if (i + 1 < text.size() &&
               IsControlPair(byte, static_cast<unsigned char>(text[i + 1]))) {
      AppendEscaped(byte, safe);
      AppendEscaped(static_cast<unsigned char>(text[++i]), safe);
    } else {
      safe += text[i];
    }
  }
  return safe;
}

}  // namespace

std::shared_ptr<MetaObj::MetaString> SanitizedText(std::string_view text) {
  if (IsPrintableAscii(text)) {
    return MetaObj::MetaString::New(std::string(text));
  }
  return MetaObj::MetaString::NewUtf8WithEscapes(EscapeControls(text, ""));
}

std::shared_ptr<MetaObj::MetaString> SanitizedLines(std::string_view text) {
  return MetaObj::MetaString::NewUtf8WithEscapes(EscapeControls(text, "\t\n"));
}

const std::shared_ptr<MetaObj::MetaString>& RepeatedText::Get(std::string_view text) {
  if (text != text_) {
    sanitized_ = SanitizedText(text);
    text_ = text;
  }
  return sanitized_;
}

std::shared_ptr<MetaObj::MetaList> SanitizedList(const std::vector<std::string>& texts) {
  auto list = MetaObj::MetaList::New(MetaObj::MetaType::String);
  list->Reserve(texts.size());
  for (const std::string& text : texts) {
    list->Add(SanitizedText(text));
  }
  return list;
}

}  // namespace Kestrel::Host

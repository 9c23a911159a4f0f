#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kestrel::AutoCli {

/// What stands in place of each byte when a text is escaped; made at compile time.
class EscapeTable {
 public:
  /// The longest replacement of one byte.
  static constexpr std::size_t kMaxLength = 7;

  /// No byte is replaced.
  constexpr EscapeTable() = default;

  /// Replaces `byte` by `text`, of 1 to kMaxLength bytes.
  constexpr EscapeTable& Set(unsigned char byte, std::string_view text) {
    lengths_[byte] = static_cast<std::uint8_t>(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
      texts_[byte][i] = text[i];
    }
    return *this;
  }

  constexpr bool IsMarked(char byte) const {
    return lengths_[static_cast<unsigned char>(byte)] != 0;
  }

  /// The replacement of `byte`; empty when the byte stays as it is.
  constexpr std::string_view Get(char byte) const {
    const auto index = static_cast<unsigned char>(byte);
    return {texts_[index].data(), lengths_[index]};
  }

 private:
  // Lengths stand apart from the texts: the scan for the next marked byte reads them alone.
  std::array<std::uint8_t, 256> lengths_{};
  std::array<std::array<char, kMaxLength + 1>, 256> texts_{};
};

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/TextBuffer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "autocli/text/WriteUnpadded.h"

namespace Kestrel::Formats {

template <typename Use>
void TextBuffer::ForEachPart(const Use& use) const {
  for (const Block& block : full_) {
    use(std::string_view(block.bytes.get(), block.size));
  }
  if (Used() != 0) {
    use(std::string_view(block_.get(), Used()));
  }
}

void TextBuffer::WriteTo(std::ostream& out) const {
  ForEachPart([&out](std::string_view part) {
    if (out.good()) {
      AutoCli::WriteUnpadded(out, part);
    }
  });
  if (out.good()) {
    out.flush();
  }
}

std::string TextBuffer::ToString() const {
  std::string text;
  ForEachPart([&text](std::string_view part) { text += part; });
  return text;
}

void TextBuffer::Clear() {
  full_.clear();
  end_ = block_.get();
}

void TextBuffer::AddBlock(std::size_t atLeast) {
  const std::size_t last = static_cast<std::size_t>(limit_ - block_.get());
  const std::size_t size = std::max({atLeast, kFirstBlock, std::min(last * 2, kMaxBlock)});
  Bytes block(std::allocator<char>().allocate(size), Free{size});
  if (block_ != nullptr) {
    const std::size_t used = Used();
    full_.push_back({std::move(block_), used});
  }
  block_ = std::move(block);
  end_ = block_.get();
  limit_ = end_ + size;
}

}  // namespace Kestrel::Formats

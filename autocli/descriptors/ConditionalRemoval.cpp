// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A pass looks at each "{" from left to right:
//   - It steps into a block that is not closed.
//   - It removes a closed block together with the text before it, from the last "$" on, if that
//     text and the block form a conditional. The block need not be the conditional's own: in
//     `$if{a,{b}`, where the brace of the conditional is not closed, it is `{b}`.
//   - It steps over any other closed block.
// A removal can take away the end of a block that was stepped over. The next pass then steps into
// that block.

#include "autocli/descriptors/ConditionalRemoval.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/text/StartsWith.h"

namespace Kestrel::AutoCli {
namespace {

constexpr std::size_t kNone = std::string::npos;

/// The position of a "{" of the template, and the position after the "}" that closes it. The second
/// position is kNone when the block is not closed.
struct Block {
  std::size_t begin;
  std::size_t end;
};

/// Returns the blocks of `text` in the order of their opening braces.
std::vector<Block> FindBlocks(const MarkedText& text) {
  const std::string& bytes = text.Bytes();
  std::vector<Block> blocks;
  std::vector<std::size_t> open;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if ((bytes[i] != '{' && bytes[i] != '}') || text.IsFromValue(i)) {
      continue;
    }
    if (bytes[i] == '{') {
      open.push_back(blocks.size());
      blocks.push_back({i, kNone});
    } else if (!open.empty()) {
      blocks[open.back()].end = i + 1;
      open.pop_back();
    }
  }
  return blocks;
}

/// One pass through `text`.
class Pass {
 public:
  explicit Pass(const MarkedText& text) : text_(text) {}

  MarkedText Run() {
    for (const Block& block : FindBlocks(text_)) {
      if (block.begin >= position_ && block.end != kNone) {
        KeepOrRemove(block);
      }
    }
    KeepUntil(text_.Size());
    return std::move(kept_);
  }

 private:
  /// A "$" in `kept_`.
  struct Dollar {
    std::size_t position;
    std::size_t nameEnd;  // the name that follows is known up to here, and is not read again
  };

  void KeepOrRemove(const Block& block) {
    const std::size_t brace = kept_.Size() + block.begin - position_;
    KeepUntil(block.end);
    auto end = dollars_.end();
    while (end != dollars_.begin() && std::prev(end)->position > brace) {
      --end;
    }
    if (end != dollars_.begin() && IsConditional(*std::prev(end))) {
      kept_.Truncate(std::prev(end)->position);
      dollars_.erase(std::prev(end), dollars_.end());
    }
  }

  /// Whether `kept_`, from `dollar` on, consists of "$if{", a name, a comma, at least one byte, and
  /// the "}" with which `kept_` ends.
  bool IsConditional(Dollar& dollar) const {
    constexpr std::string_view kOpening = "$if{";
    const std::string_view bytes = kept_.Bytes();
    const std::size_t name = dollar.position + kOpening.size();
    if (!StartsWith(bytes.substr(dollar.position), kOpening) ||
        kept_.IsFromValue(dollar.position) || kept_.IsFromValue(name - 1)) {
      return false;
    }
    std::size_t& end = dollar.nameEnd;
    end = std::max(end, name);
    while (IsNameByte(bytes[end])) {  // ends at the "}" of the block at the latest
      ++end;
    }
    return end > name && bytes[end] == ',' && end + 2 < bytes.size();
  }

  void KeepUntil(std::size_t end) {
    const std::size_t begin = kept_.Size();
    kept_.Append(text_, position_, end - position_);
    position_ = end;
    const std::string& bytes = kept_.Bytes();
    for (std::size_t i = bytes.find('$', begin); i != kNone; i = bytes.find('$', i + 1)) {
      dollars_.push_back({i, i});
    }
  }

  const MarkedText& text_;
  std::size_t position_ = 0;  // everything before it is either in `kept_` or removed
  MarkedText kept_;
  std::vector<Dollar> dollars_;  // from left to right
};

}  // namespace

bool RemoveConditionalsOnce(MarkedText& text) {
  if (text.Bytes().find("$if{") == kNone) {
    return false;
  }
  const std::size_t size = text.Size();
  text = Pass(text).Run();
  return text.Size() < size;
}

}  // namespace Kestrel::AutoCli

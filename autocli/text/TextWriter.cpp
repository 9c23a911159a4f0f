// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/TextWriter.h"

#include <algorithm>
#include <utility>

#include "autocli/text/WriteUnpadded.h"

namespace Kestrel::AutoCli {

TextWriter::TextWriter(std::ostream& out) : out_(out), failed_(!out.good()) {}

TextWriter::~TextWriter() {
  if (isDrained_ && used_ == 0) {
    return;
  }
  try {
    Finish();
  } catch (...) {
    // A destructor must not throw. The state of the stream shows the failure.
  }
}

void TextWriter::AppendOne(const Escaped& escaped) {
  std::string_view rest = escaped.text;
  while (!rest.empty() && !failed_) {
    const Escaped part{rest.substr(0, kMaxEscapedAtOnce), escaped.table};
    used_ = static_cast<std::size_t>(PutPiece(part, Reserve(MaxBytes(part))) - buffer_);
    rest.remove_prefix(part.text.size());
  }
}

void TextWriter::Drain() {
  isDrained_ = true;
  Send();
}

void TextWriter::Finish() {
  Drain();
  if (!failed_) {
    out_.flush();
  }
}

void TextWriter::AppendLong(std::string_view text) {
  Send();
  if (text.size() >= kCapacity) {
    WriteOut(text);
    return;
  }
  std::memcpy(buffer_, text.data(), text.size());
  used_ = text.size();
}

void TextWriter::RepeatLong(char byte, std::size_t count) {
  while (count > 0 && !failed_) {
    if (used_ == kCapacity) {
      Send();
    }
    const std::size_t step = std::min(count, kCapacity - used_);
    std::memset(buffer_ + used_, byte, step);
    used_ += step;
    count -= step;
  }
}

void TextWriter::Send() {
  // The buffer counts as empty before the write, so that nothing is written twice if the write
  // throws.
  WriteOut(std::string_view(buffer_, std::exchange(used_, 0)));
}

void TextWriter::WriteOut(std::string_view text) {
  if (failed_ || text.empty()) {
    return;
  }
  failed_ = true;  // stays true if the stream throws
  out_.width(0);   // as formatted output does
  WriteUnpadded(out_, text);
  failed_ = !out_.good();
}

}  // namespace Kestrel::AutoCli

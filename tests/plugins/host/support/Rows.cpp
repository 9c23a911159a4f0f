// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "plugins/host/frame/HexDigits.h"

namespace Kestrel::Testing {

std::vector<Row> OnlyFields(const std::vector<Row>& rows, const std::vector<std::string>& fields) {
  std::vector<Row> reduced;
  for (const Row& row : rows) {
    Row few;
    for (const std::string& field : fields) {
      few[field] = row.at(field);
    }
    reduced.push_back(few);
  }
  return reduced;
}

std::vector<Row> Filter(const std::vector<Row>& rows,
                        const std::function<bool(const Row&)>& filter) {
  std::vector<Row> passed;
  std::copy_if(rows.begin(), rows.end(), std::back_inserter(passed), filter);
  return passed;
}

std::string Shown(const std::string& text) {
  std::string shown;
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte >= 0x20 && byte != 0x7f) {
      shown += letter;
    } else {
      shown += "\\x";
      Host::AppendHexDigits(byte, shown);
    }
  }
  return shown;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) {
    joined.append(joined.empty() ? "" : ", ").append(text);
  }
  return joined;
}

std::vector<std::string> Sorted(std::vector<std::string> texts) {
  std::sort(texts.begin(), texts.end());
  return texts;
}

Agreement Compare(const std::function<std::vector<Row>()>& command,
                  const std::function<std::vector<Row>()>& witness) {
  constexpr int kMaxAttempts = 20;
  Agreement agreement;
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    agreement.witness = witness();
    agreement.command = command();
    if (witness() == agreement.witness) {
      return agreement;
    }
  }
  ADD_FAILURE() << "The witness said something else each time that it was asked";
  return agreement;
}

}  // namespace Kestrel::Testing

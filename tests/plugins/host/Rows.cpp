// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace Kestrel::Testing {

Row ToRow(const MetaObj::MetaStruct& record) {
  Row row;
  for (const std::string& name : record.GetFieldNames()) {
    row[name] = record.GetField(name)->ToString();
  }
  return row;
}

std::vector<Row> CallRows(const std::string& path, const Parameters& parameters) {
  std::vector<Row> rows;
  for (const auto& record : CallHost(path, parameters).GetRecords()) {
    rows.push_back(ToRow(*record));
  }
  return rows;
}

std::vector<std::string> CallColumn(const std::string& path, const std::string& field,
                                    const Parameters& parameters) {
  std::vector<std::string> column;
  for (const Row& row : CallRows(path, parameters)) {
    column.push_back(row.at(field));
  }
  return column;
}

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
  constexpr char kDigits[] = "0123456789abcdef";
  std::string shown;
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte >= 0x20 && byte != 0x7f) {
      shown += letter;
    } else {
      shown.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
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

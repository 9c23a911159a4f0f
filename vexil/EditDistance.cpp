// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Computes, row by row, a table of the distances between all prefixes of both strings. A row
// belongs to a prefix of `left`; a swap also needs the row before the previous one.

#include "vexil/EditDistance.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace Kestrel::Vexil {

namespace {

using Row = std::vector<std::size_t>;

bool IsSwap(std::string_view left, std::size_t i, std::string_view right, std::size_t j) {
  return i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
}

}  // namespace

std::size_t EditDistance(std::string_view left, std::string_view right) {
  Row beforeLast(right.size() + 1);
  Row last(right.size() + 1);
  Row row(right.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 1; i <= left.size(); ++i) {
    std::swap(beforeLast, last);
    std::swap(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      if (IsSwap(left, i, right, j)) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
  }
  return row.back();
}

}  // namespace Kestrel::Vexil

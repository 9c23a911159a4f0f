// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaList.h"

namespace Kestrel::Benchmarks {

/// One row of the workload, as plain members.
struct Record {
  std::string name;  // 12 bytes
  long size = 0;
  bool isEnabled = false;
  std::string path;  // 40 bytes, one in eight with & < > " %
  int count = 0;     // 0 to 24
};

/// Returns `count` rows, the same in each run.
std::vector<Record> MakeRecords(std::size_t count);

/// Converts the rows to a list of structures. There must be at least one row.
std::shared_ptr<MetaObj::MetaList> MakeList(const std::vector<Record>& records);

}  // namespace Kestrel::Benchmarks

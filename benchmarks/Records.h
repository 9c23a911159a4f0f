#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Kestrel::Benchmarks {

/// A row of the workload, in plain members.
struct Record {
  std::string name;  // 12 bytes
  long size = 0;
  bool isEnabled = false;
  std::string path;  // 40 bytes, one in eight with & < > " %
  int count = 0;     // 0 to 24
};

/// So many rows, the same in each run.
std::vector<Record> MakeRecords(std::size_t count);

}  // namespace Kestrel::Benchmarks

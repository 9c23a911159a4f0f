#include "benchmarks/Records.h"

#include <cstdio>

namespace Kestrel::Benchmarks {

std::vector<Record> MakeRecords(std::size_t count) {
  std::vector<Record> records(count);
  for (std::size_t index = 0; index < count; ++index) {
    char name[16];
    char path[64];
    std::snprintf(name, sizeof name, "disk%08zu", index % 100000000);
    const char* const middle = index % 8 == 0 ? "a&b<c>d\"e%f" : "abcdefghijk";
    std::snprintf(path, sizeof path, "/srv/%s/store/volume%08zu/dd", middle, index % 100000000);
    Record& record = records[index];
    record.name = name;
    record.size = static_cast<long>(index * 7919 % 1000003 * 1024);
    record.isEnabled = index % 3 == 0;
    record.path = path;
    record.count = static_cast<int>(index % 25);
  }
  return records;
}

}  // namespace Kestrel::Benchmarks

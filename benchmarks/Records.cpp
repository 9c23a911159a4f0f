// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/Records.h"

#include <cstdio>

#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Benchmarks {
namespace {

using MetaObj::MetaList;
using MetaObj::MetaStruct;

std::shared_ptr<MetaStruct> MakeStruct(const Record& record) {
  auto structure = MetaStruct::New("Record");
  structure->SetField("Name", record.name);
  structure->SetField("Size", record.size);
  structure->SetField("Enabled", record.isEnabled);
  structure->SetField("Path", record.path);
  structure->SetField("Count", record.count);
  return structure;
}

}  // namespace

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

std::shared_ptr<MetaList> MakeList(const std::vector<Record>& records) {
  auto list = MetaList::New(MetaObj::MetaType::Struct, MakeStruct(records[0]));
  for (const Record& record : records) {
    list->Add(MakeStruct(record));
  }
  return list;
}

}  // namespace Kestrel::Benchmarks

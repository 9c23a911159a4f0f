// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/Records.h"

namespace Kestrel::Benchmarks {

/// Makes `document` an array of `records`. Copies names and strings, as Kestrel's values do.
template <typename Document>
void BuildRapidJson(const std::vector<Record>& records, Document& document) {
  using Value = typename Document::ValueType;
  auto& allocator = document.GetAllocator();
  const auto makeString = [&allocator](const std::string& text) {
    return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
  };
  document.SetArray();
  for (const Record& record : records) {
    Value value(rapidjson::kObjectType);
    value.AddMember(makeString("Name"), makeString(record.name), allocator);
    value.AddMember(makeString("Size"), Value(static_cast<std::int64_t>(record.size)), allocator);
    value.AddMember(makeString("Enabled"), Value(record.isEnabled), allocator);
    value.AddMember(makeString("Path"), makeString(record.path), allocator);
    value.AddMember(makeString("Count"), Value(record.count), allocator);
    document.PushBack(value, allocator);
  }
}

}  // namespace Kestrel::Benchmarks

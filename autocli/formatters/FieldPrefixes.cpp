// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/FieldPrefixes.h"

#include <utility>

#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {
namespace {

// Beyond these bounds a value is too varied or too deep for its records to repeat.
constexpr std::size_t kMostEntries = 64;
constexpr long kDeepestLevel = 64;

}  // namespace

const std::string* FieldPrefixes::Find(const MetaObj::MetaStruct& record, long level) {
  const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(record);
  if (layout == nullptr || level > kDeepestLevel) {
    return nullptr;
  }
  if (const Entry* const known = FindEntry(layout, level)) {
    return known->texts.data();
  }
  if (entries_.size() == kMostEntries) {
    return nullptr;
  }
  AddEntry(layout, level);
  return entries_.back().texts.data();
}

const FieldPrefixes::Entry* FieldPrefixes::FindEntry(const MetaObj::FieldLayout* layout,
                                                     long level) {
  const auto matches = [&](const Entry& entry) {
    return entry.layout == layout && entry.level == level;
  };
  if (lastUsed_ < entries_.size() && matches(entries_[lastUsed_])) {
    return &entries_[lastUsed_];
  }
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (matches(entries_[i])) {
      lastUsed_ = i;
      return &entries_[i];
    }
  }
  return nullptr;
}

void FieldPrefixes::AddEntry(const MetaObj::FieldLayout* layout, long level) {
  std::vector<std::string> texts;
  texts.reserve(layout->Count());
  for (std::size_t i = 0; i < layout->Count(); ++i) {
    texts.push_back(make_(layout->At(i).name, i == 0, level));
  }
  lastUsed_ = entries_.size();
  entries_.push_back({layout, level, std::move(texts)});
}

}  // namespace Kestrel::AutoCli

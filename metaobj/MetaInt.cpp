// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaInt.h"

#include <array>
#include <charconv>

#include "metaobj/SlabAllocator.h"

namespace Kestrel::MetaObj {

namespace {

constexpr long kFirstShared = -1;
constexpr long kLastShared = 20;

using SharedInstances = std::array<std::shared_ptr<MetaInt>, kLastShared - kFirstShared + 1>;

template <typename Make>
SharedInstances MakeSharedInstances(const Make& make) {
  SharedInstances instances;
  for (long value = kFirstShared; value <= kLastShared; ++value) {
    instances[static_cast<std::size_t>(value - kFirstShared)] = make(value);
  }
  return instances;
}

}  // namespace

bool MetaInt::_sInitialized = MetaInt::Init();

MetaInt::MetaInt(long value, FactoryFlag flag) : MetaObject(MetaType::Int, flag), value_(value) {}

const std::shared_ptr<MetaInt>& MetaInt::New() { return Shared(0); }

std::shared_ptr<MetaInt> MetaInt::New(long value) {
  if (value < kFirstShared || value > kLastShared) {
    return MakeInSlab<MetaInt>(value, FactoryFlag());
  }
  return Shared(value);
}

std::string MetaInt::ToString() const {
  char digits[32];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value_);
  return std::string(digits, end.ptr);
}

bool MetaInt::Init() {
  Shared(0);
  return true;
}

const std::shared_ptr<MetaInt>& MetaInt::Shared(long value) {
  static const SharedInstances instances =
      MakeSharedInstances([](long each) { return MakeInSlab<MetaInt>(each, FactoryFlag()); });
  return instances[static_cast<std::size_t>(value - kFirstShared)];
}

}  // namespace Kestrel::MetaObj

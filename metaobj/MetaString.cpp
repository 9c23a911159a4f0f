// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaString.h"

#include <cstdlib>

#include "kestrel/platform/TessaLibs.h"
#include "metaobj/SlabAllocator.h"

namespace Kestrel::MetaObj {

namespace {

constexpr ssize_t kUntilNul = -1;
constexpr int kUtf8 = 0;

struct FreeText {
  void operator()(char* text) const { std::free(text); }
};

std::string Escaped(const std::string& value) {
  const std::unique_ptr<char, FreeText> text(Unicode_EscapeBuffer(value.c_str(), kUntilNul, kUtf8));
  if (text == nullptr) {
    throw std::bad_alloc();
  }
  return text.get();
}

}  // namespace

bool MetaString::_sInitialized = MetaString::Init();

MetaString::MetaString(std::string&& value, FactoryFlag flag)
    : MetaObject(MetaType::String, flag), value_(std::move(value)) {}

MetaString::MetaString(std::string_view value, FactoryFlag flag)
    : MetaObject(MetaType::String, flag), value_(value) {}

const std::shared_ptr<MetaString>& MetaString::New() {
  static const std::shared_ptr<MetaString> instance =
      MakeInSlab<MetaString>(std::string(), FactoryFlag());
  return instance;
}

std::shared_ptr<MetaString> MetaString::New(std::string&& value) {
  if (value.empty()) {
    return New();
  }
  return MakeInSlab<MetaString>(std::move(value), FactoryFlag());
}

std::shared_ptr<MetaString> MetaString::New(const std::string& value) { return Copy(value); }

std::shared_ptr<MetaString> MetaString::New(const char* value) {
  return value == nullptr ? New() : Copy(value);
}

std::shared_ptr<MetaString> MetaString::Copy(std::string_view value) {
  return value.empty() ? New() : MakeInSlab<MetaString>(value, FactoryFlag());
}

std::shared_ptr<MetaString> MetaString::NewUtf8WithEscapes(std::string&& value) {
  if (value.empty() || Unicode_IsBufferValid(value.c_str(), kUntilNul, kUtf8)) {
    return New(std::move(value));
  }
  return New(Escaped(value));
}

std::string MetaString::ToString() const { return value_; }

bool MetaString::Init() {
  New();
  return true;
}

}  // namespace Kestrel::MetaObj

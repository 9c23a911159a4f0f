// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/NestedRelease.h"

#include <new>

namespace Kestrel::MetaObj {

namespace {

using Values = std::vector<std::shared_ptr<MetaObject>>;

constexpr unsigned kMaxDepth = 32;

thread_local unsigned depth __attribute__((tls_model("initial-exec"))) = 0;
thread_local Values* waiting __attribute__((tls_model("initial-exec"))) = nullptr;

// Lives on the stack of a destructor while a structure or list releases its values.
class ReleaseScope {
 public:
  ReleaseScope() {
    if (depth++ == 0) {
      waiting = &values_;
    }
  }

  ~ReleaseScope() {
    if (depth == 1) {
      ReleaseWaiting();
      waiting = nullptr;
    }
    --depth;
  }

  ReleaseScope(const ReleaseScope&) = delete;
  ReleaseScope& operator=(const ReleaseScope&) = delete;

  void Release(std::shared_ptr<MetaObject>&& value) {
    if (depth > kMaxDepth && Defer(std::move(value))) {
      return;
    }
    value.reset();
  }

 private:
  void ReleaseWaiting() {
    while (!values_.empty()) {
      const std::shared_ptr<MetaObject> next = std::move(values_.back());
      values_.pop_back();
    }
  }

  // Returns false if there is no memory for the list of waiting values. The value is then released
  // immediately, at any depth.
  static bool Defer(std::shared_ptr<MetaObject>&& value) {
    try {
      waiting->emplace_back();
    } catch (const std::bad_alloc&) {
      return false;
    }
    waiting->back() = std::move(value);
    return true;
  }

  Values values_;  // the waiting values, in the outermost scope
};

}  // namespace

void ReleaseNested(Values&& values) noexcept {
  ReleaseScope scope;
  for (std::shared_ptr<MetaObject>& value : values) {
    scope.Release(std::move(value));
  }
}

void ReleaseContainer(std::shared_ptr<MetaObject>&& value) noexcept {
  ReleaseScope().Release(std::move(value));
}

}  // namespace Kestrel::MetaObj

#include "metaobj/NestedRelease.h"

#include <utility>
#include <vector>

namespace Kestrel::MetaObj {

namespace {

using Values = std::vector<std::shared_ptr<MetaObject>>;

constexpr unsigned kDeepest = 32;

thread_local unsigned depth __attribute__((tls_model("initial-exec"))) = 0;
thread_local Values* waiting __attribute__((tls_model("initial-exec"))) = nullptr;

void ReleaseNow(std::shared_ptr<MetaObject>&& value) {
  ++depth;
  value.reset();
  --depth;
}

void ReleaseOutermost(std::shared_ptr<MetaObject>&& value) {
  Values values;
  waiting = &values;
  ReleaseNow(std::move(value));
  while (!values.empty()) {
    std::shared_ptr<MetaObject> next = std::move(values.back());
    values.pop_back();
    ReleaseNow(std::move(next));
  }
  waiting = nullptr;
}

// Without memory to wait in, a value goes at once, deep as the stack may be.
void ReleaseLater(std::shared_ptr<MetaObject>&& value) {
  try {
    waiting->emplace_back();
    waiting->back() = std::move(value);
  } catch (const std::bad_alloc&) {
    value.reset();
  }
}

}  // namespace

void ReleaseNested(std::shared_ptr<MetaObject>&& value) noexcept {
  if (value == nullptr || value->GetType() < MetaType::Struct) {
    value.reset();
    return;
  }
  if (depth == 0) {
    return ReleaseOutermost(std::move(value));
  }
  if (depth < kDeepest) {
    return ReleaseNow(std::move(value));
  }
  ReleaseLater(std::move(value));
}

}  // namespace Kestrel::MetaObj

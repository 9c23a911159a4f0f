// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/NestedRelease.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaInt.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::Testing::kIsSanitized;
using Kestrel::Testing::MemoryLimit;

// Releases its values when it is destroyed, as a list does.
class Holder : public MetaObject {
 public:
  explicit Holder(std::vector<std::shared_ptr<MetaObject>>&& values)
      : MetaObject(MetaType::String), values_(std::move(values)) {}
  ~Holder() override { ReleaseNested(std::move(values_)); }
  std::string ToString() const override { return "a holder"; }

 private:
  std::vector<std::shared_ptr<MetaObject>> values_;
};

std::shared_ptr<MetaObject> Nested(std::shared_ptr<MetaObject> value, int levels) {
  for (int level = 0; level < levels; ++level) {
    std::vector<std::shared_ptr<MetaObject>> values;
    values.push_back(std::move(value));
    value = std::make_shared<Holder>(std::move(values));
  }
  return value;
}

// Values beyond a certain depth wait in a vector for their release. Under the memory limit, the
// vector cannot grow to `kValues`.
TEST(NestedReleaseTest, ReleasesEachValueWhenMemoryRunsOut) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs much memory";
  }
  constexpr std::size_t kValues = 2 * MemoryLimit::kRest / sizeof(std::shared_ptr<MetaObject>);
  const std::shared_ptr<MetaObject> held = MetaInt::New(1000);
  for (int levels = 0; levels < 40; ++levels) {
    std::vector<std::shared_ptr<MetaObject>> values(kValues, held);
    std::shared_ptr<MetaObject> outermost =
        Nested(std::make_shared<Holder>(std::move(values)), levels);
    ASSERT_EQ(held.use_count(), static_cast<long>(kValues) + 1);
    const MemoryLimit limit;
    outermost.reset();
    EXPECT_EQ(held.use_count(), 1) << levels;
  }
}

}  // namespace

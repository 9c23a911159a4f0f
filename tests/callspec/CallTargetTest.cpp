// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/CallTarget.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Kestrel::CallSpec {
namespace {

using testing::ElementsAre;

// Adds the number of given parameters as an error message, and reports its own destruction.
class CountingTarget : public CallTarget {
 public:
  explicit CountingTarget(bool& isGone) : isGone_(isGone) {}
  ~CountingTarget() override { isGone_ = true; }

  void Execute(const std::shared_ptr<Input>& input,
               const std::shared_ptr<Output>& output) override {
    output->AddErrorMessage(std::to_string(input->GetParameters().size()));
  }

 private:
  bool& isGone_;
};

TEST(CallTargetTest, IsCalledAndDestroyedThroughItsBase) {
  bool isGone = false;
  std::unique_ptr<CallTarget> target = std::make_unique<CountingTarget>(isGone);
  const auto input = Input::New();
  input->AddParameter("name", "value");
  const auto output = Output::New();
  target->Execute(input, output);
  EXPECT_THAT(output->GetErrors(), ElementsAre("1"));
  target.reset();
  EXPECT_TRUE(isGone);
}

}  // namespace
}  // namespace Kestrel::CallSpec

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/CallTargetSpec.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace Kestrel::CallSpec {
namespace {

// Declares the given input and output, and reports its own destruction.
class FixedTargetSpec : public CallTargetSpec {
 public:
  FixedTargetSpec(std::shared_ptr<InputSpec> input, std::shared_ptr<OutputSpec> output,
                  bool& isGone)
      : input_(std::move(input)), output_(std::move(output)), isGone_(isGone) {}
  ~FixedTargetSpec() override { isGone_ = true; }

  std::shared_ptr<InputSpec> GetInputSpec() override { return input_; }
  std::shared_ptr<OutputSpec> GetOutputSpec() override { return output_; }

 private:
  std::shared_ptr<InputSpec> input_;
  std::shared_ptr<OutputSpec> output_;
  bool& isGone_;
};

TEST(CallTargetSpecTest, IsCalledAndDestroyedThroughItsBase) {
  bool isGone = false;
  const auto input = InputSpec::New();
  const auto output = OutputSpec::New();
  std::unique_ptr<CallTargetSpec> spec = std::make_unique<FixedTargetSpec>(input, output, isGone);
  EXPECT_EQ(spec->GetInputSpec(), input);
  EXPECT_EQ(spec->GetOutputSpec(), output);
  spec.reset();
  EXPECT_TRUE(isGone);
}

}  // namespace
}  // namespace Kestrel::CallSpec

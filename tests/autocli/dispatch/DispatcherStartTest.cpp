// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/platform/TessaLibs.h"

namespace Kestrel::AutoCli {
namespace {

TEST(DispatcherStartTest, PreparesTheFeatureStateOnceForEachDispatcher) {
  const unsigned long before = FeatureState_CountInitCalls();
  const Dispatcher first;
  EXPECT_EQ(FeatureState_CountInitCalls(), before + 1);
  const Dispatcher second;
  EXPECT_EQ(FeatureState_CountInitCalls(), before + 2);
}

}  // namespace
}  // namespace Kestrel::AutoCli

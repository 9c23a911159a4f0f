// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/platform/TessaLibs.h"

namespace {

int preparations = 0;

}  // namespace

// In this program, the library calls this function instead of the one in the platform code.
void FeatureState_InitDeltaMode() { ++preparations; }

namespace Kestrel::AutoCli {
namespace {

TEST(DispatcherStartTest, PreparesTheFeatureStateOnceForEachDispatcher) {
  preparations = 0;
  const Dispatcher first;
  EXPECT_EQ(preparations, 1);
  const Dispatcher second;
  EXPECT_EQ(preparations, 2);
}

}  // namespace
}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/Version.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(VersionTest, TheStringContainsTheThreeNumbers) {
  EXPECT_EQ(std::to_string(KESTREL_VERSION_MAJOR) + "." + std::to_string(KESTREL_VERSION_MINOR) +
                "." + std::to_string(KESTREL_VERSION_PATCH),
            KESTREL_VERSION_STRING);
}

TEST(VersionTest, TheVersionNumberIsMadeFromTheThreeNumbers) {
  EXPECT_EQ(KESTREL_VERSION / 10000, KESTREL_VERSION_MAJOR);
  EXPECT_EQ(KESTREL_VERSION / 100 % 100, KESTREL_VERSION_MINOR);
  EXPECT_EQ(KESTREL_VERSION % 100, KESTREL_VERSION_PATCH);
}

}  // namespace

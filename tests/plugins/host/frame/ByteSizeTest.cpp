// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ByteSize.h"

#include <gtest/gtest.h>

#include <limits>

namespace Kestrel::Host {
namespace {

struct Case {
  const char* name;
  std::int64_t bytes;
  const char* text;
};

class ByteSizeTest : public ::testing::TestWithParam<Case> {};

TEST_P(ByteSizeTest, IsFormatted) { EXPECT_EQ(FormatByteSize(GetParam().bytes), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(
    Sizes, ByteSizeTest,
    ::testing::Values(
        Case{"Zero", 0, "0 B"}, Case{"One", 1, "1 B"}, Case{"LastByte", 1023, "1023 B"},
        Case{"FirstKibibyte", 1024, "1.0 KiB"}, Case{"Half", 1536, "1.5 KiB"},
        // A remainder of 0.05 or more is rounded up, a smaller one is rounded down.
        Case{"RoundedDown", 1024 + 51, "1.0 KiB"}, Case{"RoundedUp", 1024 + 52, "1.1 KiB"},
        // 1023.95 KiB would be rounded to 1024.0 KiB, so it is printed in the next unit.
        Case{"LastKibibyte", 1048524, "1023.9 KiB"},
        Case{"CarriedToTheNextUnit", 1048525, "1.0 MiB"}, Case{"Gibibytes", 3L << 30, "3.0 GiB"},
        Case{"Tebibytes", 1L << 40, "1.0 TiB"}, Case{"Pebibytes", 1L << 50, "1.0 PiB"},
        Case{"Largest", std::numeric_limits<std::int64_t>::max(), "8.0 EiB"},
        Case{"Negative", -1536, "-1.5 KiB"},
        Case{"Smallest", std::numeric_limits<std::int64_t>::min(), "-8.0 EiB"}),
    [](const auto& size) { return size.param.name; });

}  // namespace
}  // namespace Kestrel::Host

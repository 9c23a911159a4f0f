// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "plugins/host/support/HostCall.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(SystemFileChecksumTest, AgreesWithOpenssl) {
  const ScopedTempDir folder;
  const std::string first = folder.Write("first", "what do ya want for nothing?");
  const std::string second = folder.Write("second", "");
  for (const std::string bits : {"256", "384", "512"}) {
    const auto records = Call("system file checksum",
                              {{"file", first}, {"f", second}, {"key", "Jefe"}, {"bits", bits}})
                             .GetStructs();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(FieldOf(records, "File"), (std::vector<std::string>{first, second}));
    EXPECT_EQ(FieldOf(records, "Size"), (std::vector<std::string>{"28", "0"}));
    EXPECT_THAT(FieldOf(records, "Algorithm"), Each("HMAC-SHA" + bits));
    EXPECT_EQ(FieldOf(records, "Checksum"),
              WitnessLines("openssl dgst -sha" + bits + " -hmac Jefe -r " + first + " " + second +
                           " | cut -d' ' -f1"));
  }
}

TEST(SystemFileChecksumTest, PrintsChecksumAndFile) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("data", "what do ya want for nothing?");
  EXPECT_THAT(Print("system file checksum", {{"file", path}, {"key", "Jefe"}}, 80),
              HasSubstr("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843  " +
                        path + "\n"));
}

TEST(SystemFileChecksumTest, RefusesOtherValues) {
  const auto errors = [](const Parameters& parameters) {
    return Call("system file checksum", parameters).GetErrors();
  };
  EXPECT_THAT(errors({{"file", "/etc/hostname"}, {"key", "k"}, {"bits", "128"}}),
              ElementsAre("Invalid data constraint for parameter 'bits'. Expected a single value "
                          "from the set [256, 384, 512]"));
  EXPECT_THAT(errors({{"file", "/etc/hostname"}, {"key", ""}}),
              ElementsAre("Invalid data constraint for parameter 'key'. Value does not match the "
                          "expected regular expression (.+)"));
  EXPECT_THAT(errors({{"file", "/nowhere"}, {"key", "k"}}),
              ElementsAre("Unable to read /nowhere: No "
                          "such file or directory"));
  EXPECT_THAT(errors({}),
              ElementsAre("Missing required parameter --file", "Missing required parameter --key"));
}

}  // namespace
}  // namespace Kestrel::Testing

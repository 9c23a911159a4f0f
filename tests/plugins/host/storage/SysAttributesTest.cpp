// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/SysAttributes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

#include <string>

#include "plugins/host/support/FileLimit.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::FileLimit;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

TEST(SysAttributesTest, ReadsALine) {
  const ScopedTempDir folder;
  EXPECT_EQ(ReadAttribute(folder.Write("model", "  Fast Disk  \n")), "Fast Disk");
  EXPECT_EQ(ReadAttribute(folder.Write("empty", "")), "");
}

TEST(SysAttributesTest, ReadsANumber) {
  const ScopedTempDir folder;
  EXPECT_EQ(ReadNumber(folder.Write("size", " 12\n")), 12);
  EXPECT_EQ(ReadNumber(folder.Write("negative", "-1")), -1);
  EXPECT_EQ(ReadNumber(folder.Write("word", "large\n")), std::nullopt);
  EXPECT_EQ(ReadNumber(folder.Write("empty", "\n")), std::nullopt);
}

TEST(SysAttributesTest, AMissingAttributeHasNoValue) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("file", "x");
  for (const std::string& path : {folder.GetPath("absent"), file + "/below"}) {
    EXPECT_EQ(ReadAttribute(path), "") << path;
    EXPECT_EQ(ReadNumber(path), std::nullopt) << path;
  }
}

TEST(SysAttributesTest, AnAttributeWhoseValueTheDriverDoesNotKnowHasNone) {
  EXPECT_EQ(ReadAttribute("/proc/self/mem"), "") << "reading its beginning is an I/O error";
}

TEST(SysAttributesTest, AnyOtherFailureIsAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const ScopedTempDir folder;
  const std::string file = folder.Write("file", "1");
  EXPECT_THAT(
      [&] { ReadAttribute(folder.GetPath()); },
      ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath() + ": Is a directory"));
  const FileLimit limit(0);
  for (const auto& read : {+[](const std::string& path) { ReadAttribute(path); },
                           +[](const std::string& path) { ReadNumber(path); }}) {
    EXPECT_THAT([&] { read(file); }, ThrowsMessage<KestrelException>("Unable to read " + file +
                                                                     ": Too many open files"));
  }
}

}  // namespace
}  // namespace Kestrel::Host

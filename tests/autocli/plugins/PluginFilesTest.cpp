// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/PluginFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/regex.hpp>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "support/ScopedTempDir.h"

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using Testing::ScopedTempDir;

PluginFileKind KindByExpression(const std::string& path) {
  static const boost::regex sharedLibrary(".+\\.so$");
  static const boost::regex descriptor(".+\\.xml$");
  if (boost::regex_match(path, sharedLibrary)) {
    return PluginFileKind::SharedLibrary;
  }
  return boost::regex_match(path, descriptor) ? PluginFileKind::Descriptor : PluginFileKind::Other;
}

// Compares the rule and the expression for `path` followed by each string of at most `length`
// bytes.
void ExpectEqualForAllStrings(const std::string& alphabet, const std::string& path,
                              std::size_t length) {
  ASSERT_EQ(KindOfPluginFile(path), KindByExpression(path)) << path;
  if (length == 0) {
    return;
  }
  for (const char c : alphabet) {
    ExpectEqualForAllStrings(alphabet, path + c, length - 1);
  }
}

TEST(PluginFilesTest, KindEqualsTheExpressionsForAllShortStrings) {
  ExpectEqualForAllStrings("a.so", "", 7);
  ExpectEqualForAllStrings("/.xml", "", 6);
  ExpectEqualForAllStrings(std::string(".so\n\0", 5), "", 6);
  ExpectEqualForAllStrings("SOo.", "a", 5);
}

TEST(PluginFilesTest, KindDependsOnTheSuffixOfTheWholePath) {
  EXPECT_EQ(KindOfPluginFile("/usr/lib/x.so"), PluginFileKind::SharedLibrary);
  EXPECT_EQ(KindOfPluginFile("/usr/lib/x.xml"), PluginFileKind::Descriptor);
  EXPECT_EQ(KindOfPluginFile("/.so"), PluginFileKind::SharedLibrary);
  EXPECT_EQ(KindOfPluginFile(".so"), PluginFileKind::Other);
  EXPECT_EQ(KindOfPluginFile("libx.so.1"), PluginFileKind::Other);
  EXPECT_EQ(KindOfPluginFile("x.SO"), PluginFileKind::Other);
  EXPECT_EQ(KindOfPluginFile("x.so\n"), PluginFileKind::Other);
  EXPECT_EQ(KindOfPluginFile(""), PluginFileKind::Other);
  EXPECT_EQ(KindOfPluginFile(std::string(1000000, '.') + ".xml"), PluginFileKind::Descriptor);
}

TEST(PluginFilesTest, AMissingDirectoryIsNotAnEmptyOne) {
  const ScopedTempDir dir;
  EXPECT_EQ(ListDirectory(dir.GetPath("missing")), std::nullopt);
  EXPECT_EQ(ListDirectory(dir.Write("file", "")), std::nullopt);
  EXPECT_EQ(ListDirectory(""), std::nullopt);
  EXPECT_THAT(ListDirectory(dir.MakeDirectory("empty")), Optional(IsEmpty()));
}

TEST(PluginFilesTest, EntriesOfEveryTypeAreListedInByteOrder) {
  const ScopedTempDir dir;
  for (const char* name :
       {"b.so", "a.xml", "notes.txt", ".hidden.xml", "...", "B.so", "\xc3\xa4"}) {
    dir.Write(name, "");
  }
  dir.MakeDirectory("folder");
  ASSERT_EQ(mkfifo(dir.GetPath("fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("/nowhere", dir.GetPath("link"));

  const std::string at = dir.GetPath() + "/";
  EXPECT_THAT(ListDirectory(dir.GetPath()),
              Optional(ElementsAre(at + "...", at + ".hidden.xml", at + "B.so", at + "a.xml",
                                   at + "b.so", at + "fifo", at + "folder", at + "link",
                                   at + "notes.txt", at + "\xc3\xa4")));
}

// Returns the number of open file descriptors of this process, including the one that is used to
// count them.
std::ptrdiff_t CountDescriptors() {
  const std::filesystem::directory_iterator begin("/proc/self/fd");
  return std::distance(begin, std::filesystem::directory_iterator());
}

TEST(PluginFilesTest, ClosesTheDirectory) {
  const ScopedTempDir dir;
  dir.Write("x.so", "");
  const std::ptrdiff_t before = CountDescriptors();
  EXPECT_TRUE(ListDirectory(dir.GetPath()).has_value());
  EXPECT_EQ(CountDescriptors(), before);
}

TEST(PluginFilesTest, PathsBeginWithTheUnchangedDirectory) {
  const ScopedTempDir dir;
  dir.Write("x.so", "");
  EXPECT_THAT(ListDirectory(dir.GetPath() + "/"), Optional(ElementsAre(dir.GetPath() + "//x.so")));
}

}  // namespace
}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/DescriptorPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Catalog {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::ScopedTempDir;
using testing::SizeIs;

constexpr const char* kHead = "<p><version>1.0.0</version>";
constexpr const char* kRest =
    "<description>d</description><input-spec/><output-spec><string/></output-spec>"
    "<format-parameters/><execute>true</execute></command>";

/// A descriptor that declares two namespaces and two commands. One of the commands is in a
/// namespace that the descriptor does not declare.
const std::string kPlain = std::string(kHead) +
                           "<namespaces><namespace path=\"disk\"><description>d</description>"
                           "</namespace><namespace path='disk.usage'><description>d</description>"
                           "</namespace></namespaces><commands><command path=\"disk.usage.list\">" +
                           kRest + "<command path=\"elsewhere.below.get\">" + kRest +
                           "</commands></p>";

/// Returns the same descriptor with the first occurrence of `from` replaced by `to`.
std::string Replaced(const std::string& from, const std::string& to) {
  std::string text = kPlain;
  const std::size_t at = text.find(from);
  EXPECT_NE(std::string::npos, at) << from;
  return text.replace(at, from.size(), to);
}

void ExpectPlainPaths(const DescriptorPaths& paths) {
  EXPECT_THAT(paths.namespaces, ElementsAre("disk", "disk usage"));
  EXPECT_THAT(paths.commands, ElementsAre("disk usage list", "elsewhere below get"));
}

DescriptorPaths Load(const std::string& text) {
  const ScopedTempDir folder;
  return LoadDescriptorPaths(folder.Write("a.xml", text));
}

TEST(DescriptorPathsTest, TheReaderOfTheLibraryFindsPathsInUndeclaredNamespacesToo) {
  ExpectPlainPaths(Load(kPlain));
}

TEST(DescriptorPathsTest, TheScanFindsTheSamePaths) {
  const std::optional<DescriptorPaths> paths = ScanDescriptor(kPlain);
  ASSERT_TRUE(paths.has_value());
  ExpectPlainPaths(*paths);
}

TEST(DescriptorPathsTest, TheScanAndTheReaderAgreeOnEveryShippedDescriptor) {
  int descriptors = 0;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(KESTREL_DESCRIPTOR_SOURCE_DIR)) {
    const std::string file = entry.path().string();
    if (file.size() < 7 || file.substr(file.size() - 7) != ".xml.in") {
      continue;
    }
    std::ifstream in(file);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::optional<DescriptorPaths> scanned = ScanDescriptor(text);
    ASSERT_TRUE(scanned.has_value()) << file;
    const DescriptorPaths loaded = LoadDescriptorPaths(file);
    EXPECT_EQ(loaded.namespaces, scanned->namespaces) << file;
    EXPECT_EQ(loaded.commands, scanned->commands) << file;
    EXPECT_THAT(scanned->commands, testing::Not(IsEmpty())) << file;
    ++descriptors;
  }
  EXPECT_GT(descriptors, 0);
}

struct Spelling {
  std::string name;
  std::string text;
};

std::string NameOf(const testing::TestParamInfo<Spelling>& info) { return info.param.name; }

class PlainSpellingTest : public testing::TestWithParam<Spelling> {};

TEST_P(PlainSpellingTest, ScansAndReadsTheSamePaths) {
  const std::optional<DescriptorPaths> scanned = ScanDescriptor(GetParam().text);
  ASSERT_TRUE(scanned.has_value());
  ExpectPlainPaths(*scanned);
  ExpectPlainPaths(Load(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PlainSpellingTest,
    testing::Values(
        Spelling{"Declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + kPlain},
        Spelling{"DeclarationWithoutEncoding", "<?xml version=\"1.0\"?>" + kPlain},
        Spelling{"ByteOrderMark", "\xef\xbb\xbf" + kPlain},
        Spelling{"Instruction",
                 Replaced("<namespaces>", "<?do <command path=\"a.b\"> ?><namespaces>")},
        Spelling{"Comment",
                 Replaced("<namespaces>", "<namespaces><!-- <namespace path=\"x\"> -->")},
        Spelling{"CommentWithQuote", Replaced("<commands>", "<!-- it's > \" --><commands>")},
        Spelling{"CharacterData",
                 Replaced(">true<", "><![CDATA[</command><command path=\"a.b\"> ' ]]><")},
        Spelling{"References", Replaced(">true<", ">a &lt;b> &amp; &#99;<")},
        Spelling{"SpacesInTags",
                 Replaced("<command path=\"disk.usage.list\">",
                          "<command\n\tid = 'a>\"b' path\n=\r\n\"disk.usage.list\"\n>")},
        Spelling{"ClosingSpaces", Replaced("</namespaces>", "</namespaces \n>")},
        Spelling{"ReferenceInAnotherAttribute",
                 Replaced("<command path", "<command id=\"a&quot;b\" path")},
        Spelling{"LastFullStop", Replaced("'disk.usage'", "'disk.usage.'")},
        Spelling{"OtherElements", Replaced("<commands>",
                                           "<other><command path=\"a\"/></other><commands>"
                                           "<other path=\"b\"><command path=\"c\"/></other>")},
        Spelling{"PathsElsewhere", Replaced("<input-spec/>", "<input-spec path=\"a.b\"/>")},
        Spelling{"TextBesideElements", Replaced("<commands>", "<commands> path=\"a.b\" > ")},
        Spelling{"DefaultNamespace", Replaced("<p>", "<p xmlns=\"urn:a\" xml:lang=\"en\">")}),
    NameOf);

class RareSpellingTest : public testing::TestWithParam<Spelling> {};

TEST_P(RareSpellingTest, IsLeftToTheReaderOfTheLibrary) {
  EXPECT_FALSE(ScanDescriptor(GetParam().text).has_value());
  const ScopedTempDir folder;
  ExpectPlainPaths(ReadDescriptorPaths(folder.Write("a.xml", GetParam().text)));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, RareSpellingTest,
    testing::Values(
        Spelling{"DocumentType", "<!DOCTYPE p [<!ENTITY e \"x\">]>" + kPlain},
        Spelling{"ReferenceInAPath", Replaced("\"disk\"", "\"di&#115;k\"")},
        Spelling{"PrefixOfAnElement",
                 Replaced("<p><version>1.0.0</version>",
                          "<p xmlns:k=\"urn:a\"><version>1.0.0</version><k:other/>")},
        Spelling{"PrefixOfAPath", Replaced("<command path", "<command xmlns:k=\"urn:a\" k:path")},
        Spelling{"OtherEncoding", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + kPlain}),
    NameOf);

TEST(DescriptorPathsTest, TheScanRefusesWhatIsNotWellFormed) {
  for (const char* const text :
       {"<", "<p", "<p a", "<p a=", "<p a=x>", "<p a='x>", "<p>", "</p>", "<p></p></p>", "<!-- ",
        "<p><![CDATA[</p>", "<?xml ", "< p></p>", "<p =''></p>"}) {
    EXPECT_FALSE(ScanDescriptor(text).has_value()) << text;
  }
  EXPECT_FALSE(ScanDescriptor(std::string("<\0p\0/\0>\0", 8)).has_value());
}

TEST(DescriptorPathsTest, AFileThatCannotBeReadHasNoPaths) {
  const ScopedTempDir folder;
  for (const std::string& file :
       {folder.GetPath("missing.xml"), folder.Write("empty.xml", ""),
        folder.Write("broken.xml", "<p"), folder.Write("other.xml", "<!DOCTYPE p><p/>")}) {
    const DescriptorPaths paths = ReadDescriptorPaths(file);
    EXPECT_THAT(paths.namespaces, IsEmpty()) << file;
    EXPECT_THAT(paths.commands, IsEmpty()) << file;
  }
}

}  // namespace
}  // namespace Kestrel::Catalog

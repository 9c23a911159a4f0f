// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/BrokenDescriptors.h"
#include "support/Random.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

std::string CommandElement(const std::string& path, const std::string& text) {
  return "<command path='" + path +
         "'><description>Says it.</description><input-spec/><output-spec><string/></output-spec>"
         "<format-parameters><formatter>simple</formatter></format-parameters><execute>printf "
         "'&lt;o>&lt;string>" +
         text + "&lt;/string>&lt;/o>'</execute></command>\n";
}

std::string NamespaceElement(const std::string& path) {
  return "<namespace path='" + path + "'><description>D.</description></namespace>";
}

std::string MakeDescriptor(const std::string& namespaces, const std::string& commands) {
  return "<extension><version>1.0.0</version><namespaces>" + namespaces +
         "</namespaces><commands>" + commands + "</commands></extension>";
}

/// Returns the lines of `text` that begin with `prefix`, in order.
std::vector<std::string> LinesThatBegin(const std::string& prefix, const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    if (text.compare(begin, prefix.size(), prefix) == 0) {
      lines.push_back(text.substr(begin, end - begin));
    }
    begin = end + 1;
  }
  return lines;
}

std::string LoadError(const std::string& path, std::string fault) {
  if (const std::size_t at = fault.find('@'); at != std::string::npos) {
    fault.replace(at, 1, path);
  }
  return "Error loading plugin " + path + " skipping.  Error was: Unable to handle XML Plugin " +
         path + ".  There was an error while parsing: " + fault;
}

TEST(DescriptorTest, TheToolWorksWithAFolderFullOfBrokenDescriptors) {
  const ScopedTempDir folder;
  const auto path = [&](const std::string& name) { return folder.GetPath(name + ".xml"); };
  std::vector<std::string> expected;
  for (const BrokenDescriptor& broken : GetBrokenDescriptors()) {
    std::filesystem::copy_file(GetBrokenDescriptorFolder() + "/" + broken.name + ".xml",
                               path(broken.name));
    expected.push_back(LoadError(path(broken.name), broken.fault));
  }
  folder.MakeDirectory("a-folder.xml");
  std::filesystem::create_symlink("nowhere", path("a-link-to-nothing"));
  ASSERT_EQ(mkfifo(path("a-pipe").c_str(), 0600), 0);
  for (const char* name : {"a-folder", "a-link-to-nothing", "a-pipe"}) {
    expected.push_back(LoadError(path(name), "Unable to parse XML descriptor: @"));
  }
  folder.Write("zzz.xml",
               MakeDescriptor(NamespaceElement("good"), CommandElement("good.say", "fine")));
  std::sort(expected.begin(), expected.end());

  const VexilResult result = VexilRun({"--plugin-dir", folder.GetPath(), "good", "say"}).Run();
  EXPECT_THAT(LinesThatBegin("Error loading plugin ", result.err), ElementsAreArray(expected));
  EXPECT_EQ("fine\n", result.out);
  EXPECT_EQ(0, result.status);
}

TEST(DescriptorTest, ABrokenFileNamedOnTheCommandLineIsReported) {
  const ScopedTempDir folder;
  const std::string broken = folder.Write("a.xml", "<extension><version>2</version></extension>");
  const std::string good = folder.Write(
      "b.xml", MakeDescriptor(NamespaceElement("good"), CommandElement("good.say", "x")));
  const VexilResult result = VexilRun({"--plugin", broken, "--plugin", good, "good", "say"}).Run();
  EXPECT_EQ("Unable to load plugin " + broken + ": Unable to handle XML Plugin " + broken +
                ".  There was an error while parsing: Unknown vexil extention version.  Valid "
                "versions are: '1.0.0'\n",
            result.err);
  EXPECT_EQ("x\n", result.out);
  EXPECT_EQ(0, result.status);
}

TEST(DescriptorTest, ADescriptorMayContainVeryManyCommands) {
  const int count = Rounds(2000, 100000);
  const ScopedTempDir folder;
  std::string commands;
  for (int i = 0; i < count; ++i) {
    commands += CommandElement("many.say" + std::to_string(i), std::to_string(i));
  }
  const std::string path =
      folder.Write("many.xml", MakeDescriptor(NamespaceElement("many"), commands));
  const int last = count - 1;
  const VexilResult result =
      VexilRun({"--plugin", path, "many", "say" + std::to_string(last)}).Run();
  EXPECT_EQ(std::to_string(last) + "\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(DescriptorTest, ADescriptorMayBeVeryLong) {
  const int megabytes = Rounds(2, 100);
  const ScopedTempDir folder;
  const std::string path = folder.GetPath("long.xml");
  {
    std::ofstream file(path);
    file << "<extension><version>1.0.0</version>";
    const std::string filler(1000, ' ');
    for (int i = 0; i < megabytes * 1000; ++i) {
      file << "<note>" << filler << "</note>";
    }
    file << "<commands>" << CommandElement("say", "far") << "</commands></extension>";
  }
  const VexilResult result = VexilRun({"--plugin", path, "say"}).Run();
  EXPECT_EQ("far\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"
#include "support/Witness.h"

// The shipped descriptors in the real tool, as a person sees them.
namespace Kestrel::Testing {
namespace {

using ::testing::HasSubstr;

VexilRun DescriptorRun(const std::string& name, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--plugin", KESTREL_DESCRIPTOR_DIR "/" + name + ".xml"});
  return VexilRun(std::move(arguments));
}

TEST(DescriptorToolTest, LoadsEachDescriptorOfTheFolder) {
  const VexilResult result = VexilRun({"--plugin-dir", KESTREL_DESCRIPTOR_DIR}).Run();
  for (const char* const line :
       {"\naddress  The names and addresses of machines.\n",
        "\ndisk     The usage of disk space.\n", "\nservice  The services of this machine.\n",
        "\nsystem   The machine, its kernel and its processes.\n"}) {
    EXPECT_THAT(result.out, HasSubstr(line));
  }
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 1);
}

TEST(DescriptorToolTest, HelpsWithACommandOnANarrowScreen) {
  const VexilResult result =
      DescriptorRun("disk", {"--screen-width=80", "disk", "usage", "list", "--help"}).Run();
  EXPECT_EQ(result.out,
            "Usage: vexil disk usage list <options>\n"
            "\n"
            "Description: List how much space the folders in a folder use, the largest first.\n"
            "\n"
            "  -a|--all         Also show files.\n"
            "  -n|--depth       How many levels of folders to show; integer in the range \n"
            "                   0-20; the default is 1.\n"
            "  -d|--directory   The folder to look into; a string matching the regular \n"
            "                   expression /[^']*. (required)\n"
            "  -h|--help        Show the help message.\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(DescriptorToolTest, PrintsATable) {
  const ScopedTempDir folder;
  folder.Write("a & b", "x");
  const std::string path = folder.GetPath();
  const auto size = [](const std::string& file) {
    return WordsIn(Witness("du -sk '" + file + "'"))[0];
  };
  const VexilResult result =
      DescriptorRun("disk", {"disk", "usage", "list", "--directory", path, "--all"}).Run();
  EXPECT_EQ(result.out, "Size   Path\n-----  ----\n" + size(path) + " KiB  " + path + "\n" +
                            size(path + "/a & b") + " KiB  " + path + "/a & b\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(DescriptorToolTest, ReportsWhatAScriptReports) {
  const VexilResult result =
      DescriptorRun("disk", {"disk", "usage", "list", "--directory", "/no & such"}).Run();
  EXPECT_EQ(result.out + result.err, "Errors: \n/no & such is no directory\n");
  EXPECT_EQ(result.status, 1);
}

TEST(DescriptorToolTest, TakesASecretFromAFileOfCommands) {
  const VexilResult result = DescriptorRun("password", {"--input=STDIN"})
                                 .WithInput("system password hash --password pw --salt ab\n")
                                 .Run();
  EXPECT_EQ(result.out, Witness("printf 'pw\\n' | openssl passwd -6 -salt ab -stdin"));
  EXPECT_EQ(result.err, "");
}

}  // namespace
}  // namespace Kestrel::Testing

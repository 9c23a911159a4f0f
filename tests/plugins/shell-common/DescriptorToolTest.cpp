// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/VexilRun.h"
#include "support/Witness.h"

// The shipped descriptors in the real tool, as a user sees them.
namespace Kestrel::Testing {
namespace {

using ::testing::HasSubstr;

VexilRun DescriptorRun(const std::string& name, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--plugin", KESTREL_DESCRIPTOR_DIR "/" + name + ".xml"});
  return VexilRun(std::move(arguments));
}

TEST(DescriptorToolTest, LoadsEachDescriptorOfTheFolder) {
  // host.so declares namespaces that network.xml uses.
  const std::string host = KESTREL_HOST_PLUGIN;
  const VexilResult result = VexilRun({"--plugin-dir", host.substr(0, host.rfind('/')),
                                       "--plugin-dir", KESTREL_DESCRIPTOR_DIR})
                                 .Run();
  for (const char* const line : {"\nnetwork  Interfaces, addresses, routes, connections.\n",
                                 "\nsystem   The machine, its kernel and its processes.\n"}) {
    EXPECT_THAT(result.out, HasSubstr(line));
  }
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 1);
}

// Returns a run of the tool that loads host.so and network.xml. host.so declares some of the
// namespaces that network.xml uses.
VexilRun NetworkRun(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--plugin", KESTREL_HOST_PLUGIN, "--plugin",
                                       KESTREL_DESCRIPTOR_DIR "/network.xml"});
  return VexilRun(std::move(arguments));
}

TEST(DescriptorToolTest, PrintsAHelpPageOnANarrowScreen) {
  const VexilResult result =
      NetworkRun({"--screen-width=60", "network", "address", "check", "--help"}).Run();
  EXPECT_EQ(result.out,
            "Usage: vexil network address check <options>\n"
            "\n"
            "Description: Check whether a machine responds, and how quickly.\n"
            "\n"
            "  -a|--address   The machine's name or address. (required)\n"
            "  -n|--count     How many requests to send, integer in the \n"
            "                 range 1-20; the default is 3.\n"
            "  -f|--family    Use only this version of the Internet \n"
            "                 protocol, one of [4, 6].\n"
            "  -h|--help      Show the help message.\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(DescriptorToolTest, PrintsATable) {
  const VexilResult result =
      NetworkRun({"network", "name", "resolve", "--name", "192.0.2.1"}).Run();
  EXPECT_EQ(result.out,
            "Family  Address\n"
            "------  -------\n"
            "     4  192.0.2.1\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(DescriptorToolTest, ReportsWhatAScriptReports) {
  const VexilResult result =
      NetworkRun({"network", "name", "resolve", "--name", "no & such"}).Run();
  EXPECT_EQ(result.out + result.err, "Errors: \nThere is no address for the name 'no & such'\n");
  EXPECT_EQ(result.status, 1);
}

TEST(DescriptorToolTest, TakesASecretFromALineOfStandardInput) {
  const VexilResult result = DescriptorRun("password", {"--input=STDIN"})
                                 .WithInput("system password hash --password pw --salt ab\n")
                                 .Run();
  EXPECT_EQ(result.out, Witness("printf 'pw\\n' | openssl passwd -6 -salt ab -stdin"));
  EXPECT_EQ(result.err, "");
}

}  // namespace
}  // namespace Kestrel::Testing

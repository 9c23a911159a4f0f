// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/BrokenDescriptors.h"
#include "support/DescribeValue.h"
#include "support/SampleCommands.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using testing::Contains;
using testing::EndsWith;
using testing::Not;
using testing::UnorderedElementsAreArray;

using Testing::BrokenDescriptor;
using Testing::DescribeValue;
using Testing::GetBrokenDescriptorFolder;
using Testing::GetBrokenDescriptors;
using Testing::ScopedTempDir;
using Testing::StreamCapture;

constexpr const char* kGoodDescriptor =
    "<extension><version>1.0.0</version>"
    "<namespaces><namespace path='good'><description>G.</description></namespace></namespaces>"
    "<commands><command path='good.show'><input-spec/><output-spec><string/></output-spec>"
    "<format-parameters/><execute>echo '&lt;o>&lt;string>fine&lt;/string>&lt;/o>'</execute>"
    "</command></commands></extension>";

class BrokenDescriptorTest : public testing::TestWithParam<BrokenDescriptor> {};

std::string ReplaceAll(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

// After a broken descriptor, the next plug-in is loaded and the dispatcher still works.
TEST_P(BrokenDescriptorTest, IsReportedAndSkipped) {
  const ScopedTempDir folder;
  const std::string broken = folder.GetPath("a.xml");
  std::filesystem::copy_file(GetBrokenDescriptorFolder() + "/" + GetParam().name + ".xml", broken);
  folder.Write("b.xml", kGoodDescriptor);

  Dispatcher dispatcher;
  StreamCapture error(STDERR_FILENO);
  dispatcher.AddExternalDirectory(folder.GetPath());
  EXPECT_THAT(error.GetText(), EndsWith("Error loading plugin " + broken +
                                        " skipping.  Error was: Unable to handle XML Plugin " +
                                        broken + ".  There was an error while parsing: " +
                                        ReplaceAll(GetParam().fault, "@", broken) + "\n"));

  EXPECT_THAT(dispatcher.GetRootNamespace()->GetNamespaceNodeNames(), Not(Contains("disk")));
  const auto output = CommandOutput::New();
  dispatcher.ExecuteCommand(Testing::MakeCommandInput({"good", "show"}), output);
  EXPECT_EQ(DescribeValue(output->GetRootObject()), "string 'fine'");
}

std::string NameOf(const testing::TestParamInfo<BrokenDescriptor>& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Files, BrokenDescriptorTest, testing::ValuesIn(GetBrokenDescriptors()),
                         NameOf);

TEST(BrokenDescriptorsTest, EveryFileOfTheFolderIsListed) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(GetBrokenDescriptorFolder())) {
    files.push_back(entry.path().filename());
  }
  std::vector<std::string> listed;
  for (const BrokenDescriptor& descriptor : GetBrokenDescriptors()) {
    listed.push_back(descriptor.name + ".xml");
  }
  EXPECT_THAT(files, UnorderedElementsAreArray(listed));
}

}  // namespace
}  // namespace Kestrel::AutoCli

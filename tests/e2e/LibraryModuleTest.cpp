// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Tests how the library finds its modules. Each test uses a folder of its own with a copy of the
// library.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;

namespace fs = std::filesystem;

// With --typed, the command prints a document type, which only libxml2 reads.
constexpr char kDescriptor[] =
    "<extension><version>1.0.0</version><namespaces><namespace path='hat'><description>Hats."
    "</description></namespace></namespaces><commands><command path='hat.list'><description>List."
    "</description><input-spec><parameter name='size' type='string' "
    "required='false'><description>The size."
    "</description><constraint type='regex'><regex>[0-9]+</regex></constraint></parameter>"
    "<parameter name='typed' type='flag' required='false'><description>Typed."
    "</description></parameter></input-spec><output-spec><string/></output-spec>"
    "<format-parameters><formatter>simple</formatter></format-parameters>"
    "<execute>printf '%s' $if{typed, '&lt;!DOCTYPE o>'} '&lt;o>&lt;string>hat&lt;/string>&lt;/o>'"
    "</execute></command></commands></extension>";

/// A module, and an option with which a command needs it.
struct ModuleCase {
  const char* name;
  const char* file;
  const char* option;
  const char* purpose;
  const char* entry;
};

const ModuleCase kModules[] = {
    {"Expression", KESTREL_EXPRESSION_MODULE, "--size=7", "expressions",
     "Kestrel_CompileExpression"},
    {"Xml", KESTREL_XML_MODULE, "--typed", "XML documents", "Kestrel_GetXmlParser"},
};

class LibraryModuleTest : public ::testing::TestWithParam<ModuleCase> {
 protected:
  LibraryModuleTest() {
    const fs::path library(KESTREL_LIBRARY);
    // Copies the library under each of its names. The loader looks for the name with only the major
    // version.
    for (const auto& entry : fs::directory_iterator(library.parent_path())) {
      if (entry.path().filename().string().rfind("libkestrel.so", 0) == 0) {
        fs::copy_file(library, Path(entry.path().filename().string()));
      }
    }
    fs::create_directory(fs::path(ModulePath()).parent_path());
    std::ofstream(Path("hat.xml")) << kDescriptor;
  }

  std::string Path(const std::string& name) const { return folder_.GetPath() + "/" + name; }

  std::string ModulePath() const {
    const fs::path library = fs::path(KESTREL_LIBRARY).parent_path();
    return Path(fs::path(GetParam().file).lexically_relative(library));
  }

  /// Runs the command with `option`, or without an option if `option` is empty.
  VexilResult Run(const std::string& option) const {
    std::vector<std::string> words = {"--plugin", Path("hat.xml"), "hat", "list"};
    if (!option.empty()) {
      words.push_back(option);
    }
    return VexilRun(words).WithEnvironment("LD_LIBRARY_PATH", folder_.GetPath()).Run();
  }

 private:
  ScopedTempDir folder_;
};

TEST_P(LibraryModuleTest, IsLoadedFromTheFolderOfTheLibrary) {
  fs::copy_file(GetParam().file, ModulePath());
  const VexilResult result = Run(GetParam().option);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "hat\n");
  EXPECT_EQ(result.err, "");
}

TEST_P(LibraryModuleTest, IsFoundThroughARelativeLibraryPathAfterTheCurrentFolderChanged) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the loader takes the folder of the sanitizer, which calls it, for ours";
  }
  fs::copy_file(GetParam().file, ModulePath());
  const VexilResult result =
      VexilRun({"--plugin", TestPluginPath("FolderPlugin"), "--plugin", Path("hat.xml"), "hat",
                "list", GetParam().option})
          .WithEnvironment("LD_LIBRARY_PATH", fs::proximate(Path(".")).string())
          .Run();
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "hat\n");
}

TEST_P(LibraryModuleTest, IsNotNeededByCallsThatDoNotUseIt) {
  EXPECT_THAT(Run("--help").out, HasSubstr("--size"));
  EXPECT_EQ(Run("").out, "hat\n");
}

TEST_P(LibraryModuleTest, IsReportedMissingWithItsPath) {
  const VexilResult result = Run(GetParam().option);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr(std::string("Unable to load the part of the library for ") +
                                    GetParam().purpose + ": " + ModulePath() +
                                    ": cannot open shared object file"));
}

TEST_P(LibraryModuleTest, IsRefusedWithoutItsEntryPoint) {
  fs::copy_file(TestPluginPath("NoEntryPoint"), ModulePath());
  const VexilResult result = Run(GetParam().option);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr(std::string("undefined symbol: ") + GetParam().entry));
}

INSTANTIATE_TEST_SUITE_P(Modules, LibraryModuleTest, ::testing::ValuesIn(kModules),
                         [](const auto& module) { return module.param.name; });

}  // namespace

}  // namespace Kestrel::Testing

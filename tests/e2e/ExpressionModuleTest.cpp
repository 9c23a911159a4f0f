// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Tests how the library finds the module with regular expressions. Each test uses a folder of its
// own with a copy of the library.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;

namespace fs = std::filesystem;

constexpr char kDescriptor[] =
    "<extension><version>1.0.0</version><namespaces><namespace path='hat'><description>Hats."
    "</description></namespace></namespaces><commands><command path='hat.list'><description>List."
    "</description><input-spec><parameter name='size' type='string' "
    "required='false'><description>The size."
    "</description><constraint type='regex'><regex>[0-9]+</regex></constraint></parameter>"
    "</input-spec><output-spec><string/></output-spec><format-parameters><formatter>simple"
    "</formatter></format-parameters><execute>printf '&lt;o>&lt;string>hat&lt;/string>&lt;/o>'"
    "</execute></command></commands></extension>";

class ExpressionModuleTest : public ::testing::Test {
 protected:
  ExpressionModuleTest() {
    const fs::path library(KESTREL_LIBRARY);
    // The loader looks for the name with the major version only.
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
    return Path(fs::path(BuiltModule()).lexically_relative(library));
  }

  static std::string BuiltModule() { return KESTREL_EXPRESSION_MODULE; }

  VexilResult Run(const std::string& option) const {
    return VexilRun({"--plugin", Path("hat.xml"), "hat", "list", option})
        .WithEnvironment("LD_LIBRARY_PATH", folder_.GetPath())
        .Run();
  }

 private:
  ScopedTempDir folder_;
};

TEST_F(ExpressionModuleTest, IsLoadedFromTheFolderOfTheLibrary) {
  fs::copy_file(BuiltModule(), ModulePath());
  EXPECT_EQ(Run("--size=7").status, 0);
  EXPECT_THAT(Run("--size=x").err,
              HasSubstr("does not match the expected regular expression ([0-9]+)"));
}

TEST_F(ExpressionModuleTest, IsFoundByARelativeNameAfterTheCurrentFolderChanged) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the loader takes the folder of the sanitizer, which calls it, for ours";
  }
  fs::copy_file(BuiltModule(), ModulePath());
  const auto run = [this](const std::string& option) {
    return VexilRun({"--plugin", TestPluginPath("FolderPlugin"), "--plugin", Path("hat.xml"), "hat",
                     "list", option})
        .WithEnvironment("LD_LIBRARY_PATH", fs::proximate(Path(".")).string())
        .Run();
  };
  EXPECT_EQ(run("--size=7").err, "");
  EXPECT_THAT(run("--size=x").err,
              HasSubstr("does not match the expected regular expression ([0-9]+)"));
}

TEST_F(ExpressionModuleTest, IsNotNeededUntilAnExpressionIsCompiled) {
  const VexilResult help = Run("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("--size"));
}

TEST_F(ExpressionModuleTest, IsReportedMissingWithItsPath) {
  const VexilResult result = Run("--size=7");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("Unable to load the part of the library for expressions: " +
                                    ModulePath() + ": cannot open shared object file"));
}

TEST_F(ExpressionModuleTest, IsRefusedWithoutItsEntryPoint) {
  fs::copy_file(TestPluginPath("NoEntryPoint"), ModulePath());
  const VexilResult result = Run("--size=7");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("undefined symbol: Kestrel_CompileExpression"));
}

}  // namespace

}  // namespace Kestrel::Testing

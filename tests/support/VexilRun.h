// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Testing {

/// What one run of the tool left behind.
struct VexilResult {
  std::string out;  ///< standard output, every byte
  std::string err;  ///< standard error, every byte but what VexilRun says
  int status = -1;  ///< the exit status, -1 when a signal ended the tool
  int signal = 0;   ///< the signal that ended the tool, 0 when none did
};

/// One run of the real tool, the one that this build made.
///
/// Unless told otherwise the tool is called "vexil", reads an empty standard input, works in the
/// folder of the test and has the test's environment without OPR_USERNAME.
///
/// The tool looks for plug-ins in the folders built into it. Where the build made them, empty, it
/// has nothing to say about them. Where they are missing the tool's first two lines on standard
/// error say so; those very lines are then demanded and left out of the result, no other ever is.
class VexilRun {
 public:
  explicit VexilRun(std::vector<std::string> arguments = {});

  /// What stands on standard input.
  VexilRun& WithInput(std::string_view text);

  /// Sets a variable of the tool's environment; without a value it is unset.
  VexilRun& WithEnvironment(const std::string& name, const std::optional<std::string>& value);

  /// The folder to work in.
  VexilRun& InDirectory(const std::string& path);

  /// The name to call the tool by, its argv[0].
  VexilRun& CalledAs(const std::string& name);

  /// The tool gets an argument vector without any argument, not even its name.
  VexilRun& CalledByNoName();

  /// The file that standard output goes to; `VexilResult::out` is then empty.
  VexilRun& WithOutputTo(const std::string& path);

  /// Standard output is a pipe that nobody reads any more.
  VexilRun& WithoutReader();

  /// The process that starts the tool ignores SIGPIPE.
  VexilRun& IgnoringBrokenPipes();

  /// The tool starts with this descriptor closed.
  VexilRun& WithoutDescriptor(int descriptor);

  /// Runs the tool to its end. One that is not done within two minutes is killed and fails the
  /// test.
  VexilResult Run() const;

  /// Becomes the tool, with the standard streams of this process; for a child of the test.
  [[noreturn]] void Exec() const;

 private:
  [[noreturn]] void ExecWith(int input, int output, int error) const;

  std::vector<std::string> arguments_;
  std::optional<std::string> name_ = "vexil";
  std::string input_;
  std::map<std::string, std::optional<std::string>> environment_;
  std::string directory_;
  std::string outputPath_;
  std::vector<int> closed_;
  bool hasReader_ = true;
  bool ignoresBrokenPipes_ = false;
};

/// The folders that the tool of this build loads plug-ins from, in the order it does.
std::vector<std::string> GetDefaultPluginFolders();

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Testing {

/// The result of one run of the tool.
struct VexilResult {
  std::string out;  ///< standard output
  std::string err;  ///< standard error, without the lines that VexilRun removes
  int status = -1;  ///< the exit status; -1 if a signal ended the tool
  int signal = 0;   ///< the signal that ended the tool; 0 if none did
};

/// A run of the tool that this build made.
///
/// By default the tool is called "vexil", has an empty standard input, runs in the working
/// directory of the test and has the test's environment without OPR_USERNAME.
///
/// The tool looks for plug-ins in the folders that were chosen when it was built. For each of these
/// that does not exist, it first writes a line to standard error. `Run` requires exactly these
/// lines at the beginning and removes them from the result.
class VexilRun {
 public:
  explicit VexilRun(std::vector<std::string> arguments = {});

  /// Sets the text on standard input.
  VexilRun& WithInput(std::string_view text);

  /// Sets a variable of the tool's environment, or unsets it when there is no value.
  VexilRun& WithEnvironment(const std::string& name, const std::optional<std::string>& value);

  /// Sets the working directory.
  VexilRun& InDirectory(const std::string& path);

  /// Sets the name that the tool is called by, its argv[0].
  VexilRun& CalledAs(const std::string& name);

  /// Starts the tool with an empty argument vector, which does not even contain its name.
  VexilRun& CalledByNoName();

  /// Redirects standard output to a file; `VexilResult::out` is then empty.
  VexilRun& WithOutputTo(const std::string& path);

  /// Makes standard output a pipe whose reading end is closed.
  VexilRun& WithoutReader();

  /// Starts the tool with SIGPIPE ignored.
  VexilRun& IgnoringBrokenPipes();

  /// Starts the tool with this file descriptor closed.
  VexilRun& WithoutDescriptor(int descriptor);

  /// Runs the tool until it ends. If that takes two minutes, kills the tool and fails the test.
  VexilResult Run() const;

  /// Replaces this process, a child of the test, by the tool. The standard streams are those of
  /// this process, unless `WithOutputTo`, `WithoutReader` or `WithoutDescriptor` changes them.
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

/// Returns the folders from which the tool of this build loads plug-ins, in the order of loading.
std::vector<std::string> GetDefaultPluginFolders();

}  // namespace Kestrel::Testing

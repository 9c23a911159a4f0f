// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

/// The base of tests of commands on a simulated machine, whose /proc, /run and /sys contain only
/// files from the test. The same applies to /etc and /var if the test adds files there.
class MadeUpMachineTest : public ::testing::Test {
 protected:
  MadeUpMachineTest();

  // Paths are relative to the root of the machine, as in "proc/loadavg".
  void File(const std::string& path, std::string_view text) { files_.Write(path, text); }
  void Folder(const std::string& path) { files_.MakeDirectory(path); }
  bool IsFile(const std::string& path) const;
  std::string Content(const std::string& path) const;
  void Mode(const std::string& path, mode_t mode);
  void Link(const std::string& path, const std::string& target);

  /// Runs `body` in a child process on that machine. Skips the test if that is not possible.
  void RunThere(const std::function<void()>& body) const;

  /// Called on that machine before each body, in the child process. Does nothing unless overridden.
  virtual void PrepareThere() const;

  /// Checks what a command prints in its default format on a screen of 80 columns.
  void ExpectPrinted(const std::string& commandLine, const std::string& printed) const;

 private:
  ScopedTempDir files_;
};

}  // namespace Kestrel::Testing

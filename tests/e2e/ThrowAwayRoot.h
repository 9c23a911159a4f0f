// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/VexilRun.h"

namespace Kestrel::Testing {

/// Returns why the tool cannot run in a throw-away root on this machine, or nothing if it can.
std::optional<std::string> WhyNoThrowAwayRoot();

/// A run of the tool in a root folder of its own, in which files may belong to any user. The folder
/// is in memory, and only this run mounts it.
///
/// The folder contains the tool, the library and an empty default folder for plug-ins, at the same
/// paths as in this build. It also contains shared objects in /samples; /usr of this machine, which
/// is read-only; and /dev, /proc and /tmp. Everything that does not come from this machine belongs
/// to root.
class ThrowAwayRoot {
 public:
  /// `prepare` is called as root, in the new root, before the tool starts.
  explicit ThrowAwayRoot(std::function<void()> prepare) : prepare_(std::move(prepare)) {}

  /// Sets the real and the effective user of the process that starts the tool; both are root by
  /// default. The groups of that process have the number of the real user.
  ThrowAwayRoot& As(uid_t real, uid_t effective);

  /// Sets a variable of the environment, which is otherwise empty.
  ThrowAwayRoot& WithEnvironment(const std::string& name, const std::string& value);

  ThrowAwayRoot& WithoutProc();

  VexilResult Run(const std::vector<std::string>& arguments) const;

 private:
  void Enter(const std::string& folder) const;
  [[noreturn]] void Exec(const std::vector<std::string>& arguments) const;

  std::function<void()> prepare_;
  uid_t real_ = 0;
  uid_t effective_ = 0;
  std::map<std::string, std::string> environment_;
  bool hasProc_ = true;
};

// Functions for a preparation. A failure ends the run.

void Own(const std::string& path, uid_t user, gid_t group = 0);  // does not follow a link
void SetMode(const std::string& path, mode_t mode);
void MakeLink(const std::string& target, const std::string& path);
void MakeFolder(const std::string& path);
void MakePipe(const std::string& path);
void WriteFile(const std::string& path, const std::string& text);
void Move(const std::string& from, const std::string& to);

}  // namespace Kestrel::Testing

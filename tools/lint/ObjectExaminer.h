// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/lint/SharedObject.h"

namespace Kestrel::AutoCli {
class CommandSpec;
class Dispatcher;
}  // namespace Kestrel::AutoCli

namespace Kestrel::Lint {

/// Examines a shared object in this process, which may not survive the examination.
///
/// Calls `enter` with a description of each step, before any code of the shared object runs in that
/// step, and `report` with each fault.
class ObjectExaminer {
 public:
  using Enter = std::function<void(const std::string& what)>;
  using Report = std::function<void(const ObjectFault& fault)>;

  ObjectExaminer(Enter enter, Report report)
      : enter_(std::move(enter)), report_(std::move(report)) {}

  /// Loads the plug-ins `before`, then `file`, and examines what `file` adds. Returns the added
  /// tree, and the formatters of all plug-ins; faults go to `report` as they are found.
  ObjectReport Run(const std::string& file, const std::vector<std::string>& before);

 private:
  void Load(AutoCli::Dispatcher& dispatcher, const std::string& file);
  void Examine(const AutoCli::Dispatcher& dispatcher, const Catalog::Tree& tree);
  void Examine(AutoCli::CommandSpec& command, const std::string& path,
               const AutoCli::Dispatcher& dispatcher);

  Enter enter_;
  Report report_;
};

/// Returns the names in the bytes of a shared object that look like a misspelt entry point.
std::vector<std::string> FindMisspeltEntryPoints(const std::string& file);

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/autocli/Plugin.h"
#include "vexil/formats/ExactFormatter.h"

namespace Kestrel::Formats {

/// The plug-in of the tool itself, which adds the tool's own formatters to those of the library. It
/// adds no commands. Its name is "Formats".
class FormatsPlugin : public AutoCli::Plugin {
 public:
  /// Makes the formatters; there is nothing to initialise.
  explicit FormatsPlugin(const CallFacts& facts = {});
  ~FormatsPlugin() override;

  void Initialize() override;
  const std::string& GetName() const override;
  void RegisterNamespaces(std::shared_ptr<AutoCli::Namespace> root) override;
  bool HasFormatter(const std::string& name) override;
  std::shared_ptr<AutoCli::Formatter> GetFormatter(const std::string& name) override;

  /// Returns all formatters. Only those that `GetFormatter` has returned have a description.
  const std::vector<std::shared_ptr<AutoCli::Formatter>>& GetFormatters() override;

 private:
  std::string name_;
  std::vector<std::shared_ptr<AutoCli::Formatter>> formatters_;  // all are ExactFormatters
};

}  // namespace Kestrel::Formats

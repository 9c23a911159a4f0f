// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

/// The plug-in that is built into the library. Its name is "Internal". It has the built-in
/// formatters and the command `vexil command list`. Every dispatcher makes one and registers it
/// first.
class KESTREL_API InternalPlugin : public Plugin {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a plug-in without formatters.
  static std::shared_ptr<InternalPlugin> New();

  /// For `New` only; no other caller can make the flag.
  explicit InternalPlugin(FactoryFlag flag);
  ~InternalPlugin() override;

  /// Makes the formatters "table", "simple", "xml", "python", "json" and "commandhelp", in this
  /// order. Call it once.
  void Initialize() override;

  /// Returns "Internal".
  const std::string& GetName() const override;

  /// Registers the command `vexil command list` and its namespaces below `root`. Throws
  /// KestrelException when `root` has a child `vexil` already.
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;

  bool HasFormatter(const std::string& name) override;
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

 private:
  static const std::string& _name;

  std::vector<std::shared_ptr<Formatter>> formatters_;
};

}  // namespace Kestrel::AutoCli

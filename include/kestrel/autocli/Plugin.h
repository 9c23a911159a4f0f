// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::AutoCli {

/// Something that adds namespaces, commands and formatters to a dispatcher.
///
/// A dispatcher calls `Initialize` once, then `RegisterNamespaces` once, then asks for the
/// formatters; it owns the plug-in from then on.
class KESTREL_API Plugin {
 public:
  virtual ~Plugin();

  /// Loads what the plug-in needs. Throws KestrelException when that fails.
  virtual void Initialize() = 0;

  /// The plug-in's name in messages and in the list of plug-ins. Lives as long as the plug-in.
  virtual const std::string& GetName() const = 0;

  /// Adds the plug-in's namespaces and commands below `root`, which is not to be kept beyond the
  /// call. Throws KestrelException when that fails; what was added before stays.
  virtual void RegisterNamespaces(std::shared_ptr<Namespace> root) = 0;

  /// Whether the plug-in has a formatter of exactly this name.
  virtual bool HasFormatter(const std::string& name) = 0;

  /// The formatter of exactly this name, null when there is none.
  virtual std::shared_ptr<Formatter> GetFormatter(const std::string& name) = 0;

  /// All formatters of the plug-in. Lives as long as the plug-in. An override may return a
  /// reference to non-const.
  virtual const std::vector<std::shared_ptr<Formatter>>& GetFormatters() = 0;
};

}  // namespace Kestrel::AutoCli

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

/// Adds namespaces, commands and formatters to a dispatcher.
///
/// `Initialize` is called once: by the dispatcher for a plug-in that it loads from a file,
/// otherwise by the caller of `Dispatcher::RegisterPlugin`. The dispatcher then calls
/// `RegisterNamespaces` once and asks for the formatters. From then on, it shares the ownership of
/// the plug-in.
class KESTREL_API Plugin {
 public:
  virtual ~Plugin();

  /// Loads what the plug-in needs. Throws KestrelException when that fails.
  virtual void Initialize() = 0;

  /// Returns the plug-in's name, for messages and the list of plug-ins. The reference is valid as
  /// long as the plug-in exists.
  virtual const std::string& GetName() const = 0;

  /// Adds the plug-in's namespaces and commands below `root`. The plug-in must not keep `root`
  /// beyond the call. Throws KestrelException when that fails; what was added before stays.
  virtual void RegisterNamespaces(std::shared_ptr<Namespace> root) = 0;

  /// Returns whether the plug-in has a formatter of exactly this name.
  virtual bool HasFormatter(const std::string& name) = 0;

  /// Returns the formatter of exactly this name, null when there is none.
  virtual std::shared_ptr<Formatter> GetFormatter(const std::string& name) = 0;

  /// Returns all formatters of the plug-in. The reference is valid as long as the plug-in exists.
  /// An override may return a reference to non-const.
  virtual const std::vector<std::shared_ptr<Formatter>>& GetFormatters() = 0;
};

}  // namespace Kestrel::AutoCli

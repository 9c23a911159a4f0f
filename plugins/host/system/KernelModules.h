// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// One loaded module of the kernel.
struct KernelModule {
  std::string name;
  long size = 0;                   ///< In bytes.
  long references = 0;             ///< How many need it; -1 when it cannot be unloaded at all.
  std::vector<std::string> users;  ///< The modules among them.
  std::string state;               ///< "Live", "Loading" or "Unloading".
};

/// The modules of a text like that of "modules" in /proc, in its order; broken lines are left out.
std::vector<KernelModule> ParseModules(std::string_view text);

/// The loaded modules by name; none where the kernel has no loadable modules. Throws
/// KestrelException where the kernel's files are hidden.
std::vector<KernelModule> ReadModules(const std::string& proc);

/// Whether a module is loaded or part of the kernel itself. A '-' in its name is the same as a '_'.
bool HasModule(const std::string& proc, const std::string& sys, std::string name);

}  // namespace Kestrel::Host

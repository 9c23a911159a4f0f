// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// A loaded kernel module.
struct KernelModule {
  std::string name;
  long size = 0;                   ///< In bytes.
  long references = 0;             ///< The number of users; -1 if the kernel cannot unload modules.
  std::vector<std::string> users;  ///< The modules among its users.
  std::string state;               ///< "Live", "Loading" or "Unloading".
};

/// Parses text in the format of /proc/modules. Throws KestrelException if a line is damaged.
std::vector<KernelModule> ParseModules(std::string_view text);

/// Returns the loaded modules, sorted by name; none if the kernel does not support modules. Throws
/// KestrelException if /proc is not mounted, or if the list cannot be read or is damaged.
std::vector<KernelModule> ReadModules(const std::string& proc);

/// Returns the folder with the modules of the running kernel.
std::string ModuleFolder();

/// Returns true if a module is loaded or built into the kernel, and false if it only exists in
/// `modules`, the folder with the modules of this kernel. In the name of the module, "-" and "_"
/// are equivalent. Throws KestrelException if there is no such module, or if that is unknown
/// because the folder is missing.
bool HasModule(const std::string& proc, const std::string& sys, const std::string& modules,
               const std::string& name);

}  // namespace Kestrel::Host

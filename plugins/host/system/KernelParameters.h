// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// A kernel parameter. The path of its file below /proc/sys is its name with "." and "/" exchanged.
struct KernelParameter {
  std::string name;   ///< As in "vm.swappiness"; "/" replaces a "." within a part.
  std::string value;  ///< Without the final line feed; may contain tabs and line feeds.
  bool isReadable = false;
  bool isWritable = false;
};

/// Returns the parameters whose names start with the parts in `prefix`, sorted by name; all if it
/// is empty. Those that this process cannot read have no value. Throws KestrelException if /proc is
/// not mounted or a folder below it cannot be read.
std::vector<KernelParameter> ReadParameters(const std::string& proc, const std::string& prefix);

/// Returns the value of a parameter. A name whose first separator is "/" is a path; otherwise "."
/// separates the parts, and "/" replaces a "." within a part. Throws KestrelException if the
/// parameter does not exist, is a group of parameters, or cannot be read.
std::string ReadParameter(const std::string& proc, const std::string& name);

/// Sets the value of a parameter. Throws KestrelException, with a message for the user, if the
/// parameter does not exist or is a group, if this process may not change it, or if the kernel
/// rejects the value.
void WriteParameter(const std::string& proc, const std::string& name, const std::string& value);

/// Replaces tabs and line feeds by spaces.
std::string OnOneLine(std::string value);

}  // namespace Kestrel::Host

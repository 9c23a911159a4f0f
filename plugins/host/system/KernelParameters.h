// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// One parameter of the kernel. Its file below "sys" in /proc is its name with '/' for '.'.
struct KernelParameter {
  std::string name;   ///< Like "vm.swappiness"; a '.' within a part is written '/'.
  std::string value;  ///< Without the last line end; may hold tabs and lines.
  bool isWritable = false;
};

/// The parameters whose names start with `prefix` (whole parts of a name, or empty for all), by
/// name. Those that may not be read are left out. Throws KestrelException where the kernel's files
/// are hidden.
std::vector<KernelParameter> ReadParameters(const std::string& proc, const std::string& prefix);

/// The parameter's value. `name` separates its parts by '.' or by '/'; the first one that occurs
/// decides which it is, the other then stands for '.'.
/// Throws KestrelException when there is no such parameter, it is a group of others, or it may not
/// be read.
std::string ReadParameter(const std::string& proc, const std::string& name);

/// Gives the parameter that value. Throws KestrelException, in words for the user, when there is no
/// such parameter, the right is missing, or the kernel refuses the value.
void WriteParameter(const std::string& proc, const std::string& name, const std::string& value);

/// The value with one blank for each tab and line end, so that it fills one line.
std::string OnOneLine(std::string value);

}  // namespace Kestrel::Host

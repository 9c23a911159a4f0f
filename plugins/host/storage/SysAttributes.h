// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

// These functions read the attributes of devices below /sys. An attribute is missing if the device
// does not have it, does not know its value or is being removed, or if this process may not read
// it. Any other failure to read it throws KestrelException with its path, so that a limit of the
// system is not mistaken for a machine without devices.

/// Returns the content of an attribute's file without white space at its ends; an empty string if
/// the attribute is missing.
std::string ReadAttribute(const std::string& path);

/// Returns the number in an attribute's file; nothing if the attribute is missing or is not a
/// number.
std::optional<long> ReadNumber(const std::string& path);

/// Returns the names in a folder, in byte order; none if it is missing.
std::vector<std::string> ListAttributes(const std::string& folder);

/// Like ListAttributes, but also throws KestrelException if the folder is missing.
std::vector<std::string> ListDevices(const std::string& folder);

}  // namespace Kestrel::Host

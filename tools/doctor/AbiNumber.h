// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Kestrel::Doctor {

/// Returns the number of the plug-in interface that a shared object was compiled for. Reads the
/// file without loading it. Returns nothing if it has no number, or is not an ELF file with the
/// word size of this program.
std::optional<unsigned> ReadAbiNumber(const std::string& file);

}  // namespace Kestrel::Doctor

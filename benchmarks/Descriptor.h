// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Benchmarks {

/// Returns a descriptor with ten commands in a namespace of this name.
std::string MakeDescriptor(const std::string& name);

}  // namespace Kestrel::Benchmarks

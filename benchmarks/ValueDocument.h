// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>

namespace Kestrel::Benchmarks {

/// Returns a value document that contains a list of `count` records, one field per line.
std::string MakeValueDocument(std::size_t count);

}  // namespace Kestrel::Benchmarks

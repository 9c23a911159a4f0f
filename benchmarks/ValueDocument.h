// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>

namespace Kestrel::Benchmarks {

/// A result document with a list of so many records, a field to a line.
std::string MakeValueDocument(std::size_t count);

}  // namespace Kestrel::Benchmarks

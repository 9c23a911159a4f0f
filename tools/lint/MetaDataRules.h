// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Kestrel::Lint {

/// A mistake in the meta-data of a command.
struct MetaDataFault {
  const char* rule;
  std::size_t entry;
  std::string what;
  std::string advice;
};

/// Returns the mistakes in meta-data, given as pairs of name and value. `parameters` are those of
/// the command.
std::vector<MetaDataFault> FindMetaDataFaults(
    const std::vector<std::pair<std::string, std::string>>& entries,
    const std::vector<std::string>& parameters);

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Kestrel::MetaObj {

/// Appends one message, the concatenation of `pieces`, to `errors`. Does nothing when `errors` is
/// null, which means that the caller needs only a result.
template <typename... Pieces>
void AppendError(std::vector<std::string>* errors, const Pieces&... pieces) {
  if (errors != nullptr) {
    std::string message;
    (message.append(pieces), ...);
    errors->push_back(std::move(message));
  }
}

}  // namespace Kestrel::MetaObj

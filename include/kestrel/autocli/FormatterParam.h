// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// The documentation of one parameter of a formatter.
struct FormatterParam {
  /// The key, for example "fields:<TypeName>".
  std::string name;

  /// A description for users.
  std::string description;

  /// The library sets it only for "fields:<TypeName>" of the table formatter, and never reads it.
  bool flag = false;
};

}  // namespace Kestrel::AutoCli

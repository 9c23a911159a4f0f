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

  /// True only for "fields:<TypeName>" of the table formatter. The library does not use it.
  bool flag = false;
};

}  // namespace Kestrel::AutoCli

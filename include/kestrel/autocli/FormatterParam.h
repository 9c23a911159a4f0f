// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// One parameter that a formatter documents.
struct FormatterParam {
  /// The key as documented, e.g. "fields:<TypeName>".
  std::string name;

  /// What the key does, for people.
  std::string description;

  /// Set by the table formatter's "fields:<TypeName>" alone; handed out, never read.
  bool flag = false;
};

}  // namespace Kestrel::AutoCli

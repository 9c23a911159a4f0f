// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::MetaObj {

/// The string that is returned for missing documentation. It is in a function so that static
/// objects of any source file can use it while they are initialised.
inline const std::string& MissingDocumentation() {
  static const std::string text = "Documentation missing";
  return text;
}

}  // namespace Kestrel::MetaObj

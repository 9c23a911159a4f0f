// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/InputSpec.h>

#include <optional>
#include <string>

#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/Regex.h"
#include "plugins/host/package/PackageDatabase.h"

namespace Kestrel::Host {

/// Adds "name", the name of one package.
void AddPackageName(CallSpec::InputSpec& spec);

/// Adds "name" and "match", which select packages by their names.
void AddPackageNames(CallSpec::InputSpec& spec);

/// The selection that the parameters of AddPackageNames make.
class PackageNames {
 public:
  /// Throws KestrelException if the regular expression is invalid.
  explicit PackageNames(const CallSpec::Input& input);

  bool Accept(const Package& package) const;

 private:
  NameFilter names_;
  std::optional<Regex> match_;
};

/// Returns `text`, or "none" if it is empty.
std::string TextOrNone(std::string_view text);

}  // namespace Kestrel::Host

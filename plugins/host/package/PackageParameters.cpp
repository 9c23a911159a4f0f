// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/PackageParameters.h"

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {

void AddPackageName(CallSpec::InputSpec& spec) {
  Parameter("name", CallSpec::String,
            "The name of the package, or name:architecture for another architecture.")
      .Short("n")
      .Required()
      .AddTo(spec);
}

void AddPackageNames(CallSpec::InputSpec& spec) {
  Parameter("name", CallSpec::StringList,
            "List only packages with this name; * in it stands for any text.")
      .Short("n")
      .AddTo(spec);
  Parameter("match", CallSpec::String,
            "List only packages whose names contain a match of this regular expression.")
      .Short("m")
      .AddTo(spec);
}

PackageNames::PackageNames(const CallSpec::Input& input) : names_(input, "name") {
  if (input.HasParameter("match")) {
    match_.emplace(input.GetParameter("match"));
  }
}

bool PackageNames::Accept(const Package& package) const {
  return names_.Accepts(package.name) &&
         (!match_.has_value() || match_->IsFoundIn(std::string(package.name)));
}

std::string TextOrNone(std::string_view text) { return std::string(text.empty() ? "none" : text); }

}  // namespace Kestrel::Host

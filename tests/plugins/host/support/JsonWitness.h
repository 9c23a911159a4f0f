// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/property_tree/ptree.hpp>
#include <string>
#include <vector>

namespace Kestrel::Testing {

using Json = boost::property_tree::ptree;

/// Returns the JSON that a shell command prints; empty if it prints nothing. Fails the test in the
/// same cases as `Witness`.
Json JsonWitness(const std::string& command);

/// Returns a scalar member as a string, or `otherwise` if it is absent or null.
std::string MemberText(const Json& node, const std::string& name,
                       const std::string& otherwise = std::string());

/// Returns the strings in a member that is a list, without its nulls. Returns no string if the
/// member is absent.
std::vector<std::string> MemberTexts(const Json& node, const std::string& name);

}  // namespace Kestrel::Testing

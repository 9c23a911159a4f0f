// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/property_tree/ptree.hpp>
#include <string>
#include <vector>

namespace Kestrel::Testing {

using Json = boost::property_tree::ptree;

/// Standard output of a shell command that prints JSON; nothing when it prints nothing. Fails the
/// test as `Witness` does.
Json JsonWitness(const std::string& command);

/// A member's scalar as text; `otherwise` when it is absent or null.
std::string MemberText(const Json& node, const std::string& name,
                       const std::string& otherwise = std::string());

/// The texts in a member that is a list, without nulls; none when it is absent.
std::vector<std::string> MemberTexts(const Json& node, const std::string& name);

}  // namespace Kestrel::Testing

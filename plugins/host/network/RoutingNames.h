// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/Output.h>

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kestrel::Host {

/// Names for numbers, some of them chosen by the administrator.
class NumberTable {
 public:
  NumberTable() = default;
  NumberTable(std::initializer_list<std::pair<const unsigned, std::string>> names);

  /// Adds the names in lines such as "254 main" or "0xfe main". If a number has several names, the
  /// last one is used. "#" starts a comment; other lines are skipped.
  void AddLines(std::string_view text);

  /// Returns the name of `number`, or its decimal digits if it has none.
  std::string NameOf(unsigned number) const;
  /// Returns the names, in the order of their numbers, separated by ", ".
  std::string GetList() const;
  /// Returns the number for a name, in upper or lower case, or for a decimal or hexadecimal number;
  /// nothing for other strings.
  std::optional<unsigned> NumberOf(std::string_view text) const;

 private:
  std::map<unsigned, std::string> names_;
};

/// The numbers that the user gave for a parameter, as names or digits. Accepts every number if the
/// user gave none.
class NumberFilter {
 public:
  /// Adds an error message to `output` for each value that is neither a name nor a number.
  NumberFilter(const CallSpec::Input& input, const char* parameter, const NumberTable& table,
               CallSpec::Output& output);

  bool IsGiven() const { return !numbers_.empty(); }
  bool Accepts(unsigned number) const;

 private:
  std::vector<unsigned> numbers_;
};

/// The names of routing tables, of the protocols that create routes, and of scopes.
struct RoutingNames {
  NumberTable tables;
  NumberTable protocols;
  NumberTable scopes;
};

/// Returns names for the numbers that the kernel's headers define.
const RoutingNames& BuiltInRoutingNames();

/// Returns the built-in names and those in the files rt_tables, rt_protos and rt_scopes of the
/// machine whose root folder is `root`. Each file is read in the first folder that has it:
/// /etc/iproute2, /usr/share/iproute2 or /usr/lib/iproute2. Files such as rt_tables.d/NAME.conf are
/// read in all these folders. If a number has several names, one from a NAME.conf takes precedence
/// over one from rt_tables, rt_protos or rt_scopes, and that over a built-in name. Names from a
/// NAME.conf in /etc/iproute2 take precedence over those from the other folders. Throws
/// KestrelException if a file or folder exists and cannot be read.
RoutingNames ReadRoutingNames(const std::string& root = std::string());

}  // namespace Kestrel::Host

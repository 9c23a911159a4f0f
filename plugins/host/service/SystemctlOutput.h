// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

// Parsers of systemctl's output. Lists are requested as JSON: in a table, a description with a line
// feed would look like another row. Older versions of systemctl ignore that request and print a
// table without a header, which is parsed too. All functions throw KestrelException for anything
// else.

/// A unit that systemd has loaded, or that another unit refers to.
struct LoadedUnit {
  std::string unit;
  std::string load;
  std::string active;
  std::string sub;
  std::string description;
};
std::vector<LoadedUnit> ParseUnits(const std::string& output);

/// Returns the state of each installed unit, such as "enabled", by its name.
std::map<std::string, std::string> ParseUnitFiles(const std::string& output);

/// A timer. Times are in seconds since the epoch.
struct Timer {
  std::string unit;
  std::string activates;  ///< the unit that it starts; may be empty
  std::optional<std::int64_t> next;
  std::optional<std::int64_t> last;
};
std::vector<Timer> ParseTimers(const std::string& output);

/// The properties of a unit, from lines "Name=value". An empty line separates several units.
using UnitProperties = std::map<std::string, std::string>;
std::vector<UnitProperties> ParseProperties(const std::string& output);

}  // namespace Kestrel::Host

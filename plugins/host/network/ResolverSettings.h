// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/network/WordFilter.h"

namespace Kestrel::Host {

/// A setting that determines how names are resolved.
struct ResolverSetting {
  std::string kind;    ///< "server", "search", "option" or "sortlist".
  std::string value;   ///< An address, a domain or an option.
  long position = 0;   ///< Its position among the settings of its kind in its file, from 1.
  bool isUsed = true;  ///< Whether the C library or systemd-resolved uses it.
  std::string source;  ///< The path of its file, or "default".
};

/// Returns the words for the kinds of settings.
const WordSet& ResolverSettingKinds();

/// Parses the content of the file at `source`, which has the format of resolv.conf(5). `isUsed` is
/// false for what the C library ignores: servers with an invalid address, servers after the first
/// three valid ones, and all search lists but the last one.
std::vector<ResolverSetting> ParseResolverSettings(std::string_view text,
                                                   const std::string& source);

/// Returns the settings of the machine whose root folder is `root`: those in /etc/resolv.conf. If
/// that file names no valid server, the result contains the server that the C library uses instead.
/// If that file names the local server of systemd-resolved, the result also contains the servers
/// that systemd-resolved queries. Throws KestrelException if a file exists and cannot be read.
std::vector<ResolverSetting> ReadResolverSettings(const std::string& root = std::string());

}  // namespace Kestrel::Host

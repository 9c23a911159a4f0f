// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/PackageMarks.h"

#include <kestrel/KestrelException.h>

#include <cerrno>
#include <optional>
#include <system_error>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/package/ControlFile.h"

namespace Kestrel::Host {
namespace {

constexpr char kAll[] = "all";

std::string Key(std::string_view name, std::string_view architecture) {
  return std::string(name).append(1, ':').append(architecture);
}

}  // namespace

const char* const kAptFolder = "/var/lib/apt";

PackageMarks::PackageMarks(std::string_view nativeArchitecture, const std::string& folder)
    : native_(nativeArchitecture) {
  const std::string path = folder + "/extended_states";
  const std::optional<std::string> text = ReadFile(path);
  if (!text && (errno == ENOENT || errno == ENOTDIR)) {
    return;
  }
  if (!text) {
    throw KestrelException("Unable to read " + path + ": " +
                           std::generic_category().message(errno));
  }
  ReadControlFile(path, *text, LastStanza::EmptyLine, [this](const ControlStanza& stanza) {
    if (stanza.Get("Auto-Installed") == "1") {
      automatic_.insert(Key(stanza.Get("Package"), stanza.Get("Architecture")));
    }
  });
}

bool PackageMarks::IsAutomatic(const Package& package) const {
  if (automatic_.count(Key(package.name, package.architecture)) != 0) {
    return true;
  }
  // apt stores a package of the architecture "all" under the native architecture.
  return package.architecture == kAll && automatic_.count(Key(package.name, native_)) != 0;
}

}  // namespace Kestrel::Host

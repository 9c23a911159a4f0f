// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/InstalledFiles.h"

#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/package/ControlFile.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kLinesOfADiversion = 3;  // from, to, and the package that keeps the path

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw KestrelException("Unable to read " + path + ": " + reason);
}

void RequireWholeLines(const std::string& path, std::string_view text) {
  if (!text.empty() && text.back() != '\n') {
    Fail(path, "it ends in the middle of a line");
  }
}

// Returns the path of the package's list of files. A package that can be installed for several
// architectures at the same time has one list for each.
std::string ListPath(const Package& package, const std::string& folder) {
  const std::string start = folder + "/info/" + std::string(package.name);
  std::string path = start + ":" + std::string(package.architecture) + ".list";
  struct stat status = {};
  const bool isThere = ::stat(path.c_str(), &status) == 0 || errno != ENOENT;
  return isThere ? path : start + ".list";
}

// Returns the diversions that apply to this package: those in which another package or the
// administrator keeps the path.
std::map<std::string, std::string> ReadDiversions(const Package& package,
                                                  const std::string& folder) {
  const std::string path = folder + "/diversions";
  const std::optional<std::string> text = ReadFile(path);
  if (!text && errno == ENOENT) {
    return {};
  }
  if (!text) {
    Fail(path, std::generic_category().message(errno));
  }
  const std::vector<std::string_view> lines = SplitLines(*text);
  RequireWholeLines(path, *text);
  if (lines.size() % kLinesOfADiversion != 0) {
    Fail(path, "it ends in the middle of a diversion");
  }
  std::map<std::string, std::string> diversions;
  for (std::size_t at = 0; at < lines.size(); at += kLinesOfADiversion) {
    if (lines[at + 2] != package.name) {
      diversions.emplace(lines[at], lines[at + 1]);
    }
  }
  return diversions;
}

}  // namespace

std::vector<InstalledFile> ReadInstalledFiles(const Package& package, const std::string& folder) {
  const std::string path = ListPath(package, folder);
  const std::string text = ReadRequiredFile(path);
  RequireWholeLines(path, text);
  const std::map<std::string, std::string> diversions = ReadDiversions(package, folder);
  std::vector<InstalledFile> files;
  for (const std::string_view line : SplitLines(text)) {
    if (!StartsWith(line, "/")) {
      Fail(path, "a line is no path: " + ShownLine(line));
    }
    InstalledFile file{std::string(line), {}};
    const auto diversion = diversions.find(file.path);
    file.divertedTo = diversion == diversions.end() ? std::string() : diversion->second;
    files.push_back(std::move(file));
  }
  return files;
}

}  // namespace Kestrel::Host

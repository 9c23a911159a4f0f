// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The database is the file "status" and, while dpkg works or after it was interrupted, numbered
// files in the folder "updates", each with a newer entry. dpkg removes the updates only after
// it has replaced "status" by a file that contains all entries. So an update may disappear while
// the database is read; its entry is then in the new "status".

#include "plugins/host/package/PackageDatabase.h"

#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <optional>
#include <system_error>
#include <tuple>
#include <utility>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr char kNotInstalled[] = "not-installed";
constexpr char kConfigFiles[] = "config-files";
constexpr char kHalfInstalled[] = "half-installed";
constexpr std::string_view kWishes[] = {"unknown", "install", "hold", "deinstall", "purge"};
constexpr std::string_view kFlags[] = {"ok", "reinstreq"};
constexpr long kKibibyte = 1024;
// The maximum number of attempts. Another attempt is needed only if "status" changed while the
// files were read. That seldom happens twice, because dpkg's write to the disk between two changes
// takes longer than reading the files.
constexpr int kMaxReads = 20;

std::string_view RequireField(const ControlStanza& stanza, const char* name) {
  const std::string_view value = stanza.GetFirstLine(name);
  if (value.empty()) {
    throw KestrelException("the entry of package '" + ShownLine(stanza.GetFirstLine("Package")) +
                           "' has no field " + name);
  }
  return value;
}

template <std::size_t Count>
bool IsOneOf(std::string_view word, const std::string_view (&words)[Count]) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

bool IsState(std::string_view word) {
  return word == kNotInstalled ||
         std::find(kPackageStates.begin(), kPackageStates.end(), word) != kPackageStates.end();
}

// Parses "install ok installed": the wanted state, whether it must be installed again, and the
// present state.
void SetStatus(std::string_view status, Package& package) {
  const std::vector<std::string_view> words = SplitWords(status);
  if (words.size() != 3 || !IsOneOf(words[0], kWishes) || !IsOneOf(words[1], kFlags) ||
      !IsState(words[2])) {
    throw KestrelException("the entry of package '" + ShownLine(package.name) +
                           "' has an unknown status: " + ShownLine(status));
  }
  package.wanted = words[0];
  package.isReinstallRequired = words[1] == "reinstreq";
  package.state = words[2];
}

Package ToPackage(const ControlStanza& stanza) {
  Package package;
  package.name = RequireField(stanza, "Package");
  SetStatus(RequireField(stanza, "Status"), package);
  // A removed package whose configuration remains may lack a version and an architecture. The same
  // is true before the files of a new package are unpacked.
  const bool isHere = package.IsUnpacked() && package.state != kHalfInstalled;
  package.version = isHere ? RequireField(stanza, "Version") : stanza.GetFirstLine("Version");
  package.architecture =
      isHere ? RequireField(stanza, "Architecture") : stanza.GetFirstLine("Architecture");
  package.sizeBytes =
      ClampedProduct(ParseNumber(stanza.Get("Installed-Size")).value_or(0), kKibibyte);
  package.summary = stanza.GetFirstLine("Description");
  package.provides = stanza.Get("Provides");
  package.stanza = stanza.GetText();
  return package;
}

// dpkg writes each update to a file whose name consists of digits. Files with other names are
// unfinished.
std::vector<std::string> UpdateFiles(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> paths;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos) {
      paths.push_back(entry->path());
    }
  }
  if (error && error != std::errc::no_such_file_or_directory) {
    throw KestrelException("Unable to read " + folder + ": " + error.message());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

// What distinguishes a file from the one that replaces it.
using FileIdentity = std::tuple<ino_t, time_t, long>;

// Returns nothing if stat(2) fails, for example because there is no file.
std::optional<FileIdentity> Identify(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return FileIdentity(status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

// Returns the name in "name (= 1.2)" or "name:any".
std::string_view NameInRelation(std::string_view relation) {
  relation = Trim(relation);
  return relation.substr(0, relation.find_first_of(" \t\n(:"));
}

bool Provides(const Package& package, std::string_view name) {
  // Fast path: most packages provide nothing.
  if (package.provides.empty() || name.empty()) {
    return false;
  }
  const std::vector<std::string_view> relations = Split(package.provides, ',');
  return std::any_of(relations.begin(), relations.end(), [name](std::string_view relation) {
    return NameInRelation(relation) == name;
  });
}

std::string Join(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) {
    joined.append(joined.empty() ? "" : ", ").append(ShownLine(name));
  }
  return joined;
}

}  // namespace

const char* const kDpkgFolder = "/var/lib/dpkg";

const std::vector<std::string> kPackageStates = {
    kConfigFiles,       kHalfInstalled,     "unpacked", "half-configured",
    "triggers-awaited", "triggers-pending", "installed"};

bool Package::IsUnpacked() const { return state != kNotInstalled && state != kConfigFiles; }

PackageDatabase::PackageDatabase(const std::string& folder) {
  const std::string status = folder + "/status";
  std::optional<FileIdentity> read;
  int count = 0;
  do {
    if (++count > kMaxReads) {
      throw KestrelException("Unable to read " + status + ": it changes all the time");
    }
    packages_.clear();
    texts_.clear();
    read = Identify(status);
    ReadStatus(status);
    ReadUpdates(folder + "/updates");
  } while (Identify(status) != read);
  packages_.erase(std::remove_if(packages_.begin(), packages_.end(),
                                 [](const Package& each) { return each.state == kNotInstalled; }),
                  packages_.end());
  std::stable_sort(packages_.begin(), packages_.end(), [](const Package& one, const Package& two) {
    return std::tie(one.name, one.architecture) < std::tie(two.name, two.architecture);
  });
}

std::string_view PackageDatabase::GetNativeArchitecture() const {
  const auto dpkg = std::find_if(packages_.begin(), packages_.end(), [](const Package& each) {
    return each.name == "dpkg" && each.IsUnpacked();
  });
  return dpkg == packages_.end() ? std::string_view() : dpkg->architecture;
}

const Package& PackageDatabase::Require(const std::string& name) const {
  const std::size_t colon = name.find(':');
  const std::string_view plain = std::string_view(name).substr(0, colon);
  const std::string_view architecture =
      colon == std::string::npos ? std::string_view() : std::string_view(name).substr(colon + 1);
  if (const Package* const found = Find(plain, architecture)) {
    return *found;
  }
  const std::vector<std::string> providers = FindProviders(name);
  if (!providers.empty()) {
    throw KestrelException(
        "'" + name + "' is a virtual package, which these packages provide: " + Join(providers));
  }
  throw KestrelException("There is no package named '" + name + "' on this machine");
}

std::vector<std::string> PackageDatabase::FindProviders(std::string_view name) const {
  std::vector<std::string> names;
  for (const Package& package : packages_) {
    if (package.IsUnpacked() && Provides(package, name) &&
        (names.empty() || names.back() != package.name)) {
      names.emplace_back(package.name);
    }
  }
  return names;
}

void PackageDatabase::ReadStatus(const std::string& path) {
  std::optional<std::string> text = ReadFile(path);
  if (!text && (errno == ENOENT || errno == ENOTDIR)) {
    throw KestrelException("This machine has no packages of dpkg: there is no file " + path);
  }
  if (!text) {
    throw KestrelException("Unable to read " + path + ": " +
                           std::generic_category().message(errno));
  }
  texts_.push_back(std::move(*text));
  ReadControlFile(path, texts_.back(), LastStanza::EmptyLine,
                  [this](const ControlStanza& stanza) { packages_.push_back(ToPackage(stanza)); });
  // The package dpkg is always present. An empty database is the result of a full disk or another
  // failure.
  if (packages_.empty()) {
    throw KestrelException("Unable to read " + path + ": it contains no package");
  }
}

void PackageDatabase::ReadUpdates(const std::string& folder) {
  for (const std::string& path : UpdateFiles(folder)) {
    std::optional<std::string> text = ReadExistingFile(path);
    if (!text) {
      continue;  // It has become a part of the status.
    }
    texts_.push_back(std::move(*text));
    ReadControlFile(path, texts_.back(), LastStanza::LineFeed,
                    [this](const ControlStanza& stanza) { Replace(ToPackage(stanza)); });
  }
}

void PackageDatabase::Replace(const Package& package) {
  const auto old = std::find_if(packages_.begin(), packages_.end(), [&](const Package& each) {
    return each.name == package.name && each.architecture == package.architecture;
  });
  if (old == packages_.end()) {
    packages_.push_back(package);
  } else {
    *old = package;
  }
}

const Package* PackageDatabase::Find(std::string_view name, std::string_view architecture) const {
  const std::string_view native = GetNativeArchitecture();
  const auto rank = [native](const Package& package) {
    const bool isNative = package.architecture == native || package.architecture == "all";
    return std::make_pair(package.IsUnpacked(), isNative);
  };
  const Package* best = nullptr;
  for (const Package& package : packages_) {
    if (package.name == name && (architecture.empty() || package.architecture == architecture) &&
        (best == nullptr || rank(package) > rank(*best))) {
      best = &package;
    }
  }
  return best;
}

}  // namespace Kestrel::Host

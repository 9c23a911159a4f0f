// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/package/ControlFile.h"

namespace Kestrel::Host {

/// The folder in which dpkg stores its data.
extern const char* const kDpkgFolder;

/// The words for the states of a package that is not completely absent.
extern const std::vector<std::string> kPackageStates;

/// A package that dpkg knows. It refers to the text in its PackageDatabase, which must outlive it.
struct Package {
  std::string_view name;
  std::string_view architecture;
  std::string_view version;
  std::string_view
      wanted;  ///< what the administrator wants: install, hold, deinstall, purge, unknown
  std::string_view state;  ///< one of kPackageStates
  bool isReinstallRequired = false;
  long sizeBytes = 0;  ///< 0 if it is not recorded
  std::string_view summary;
  std::string_view provides;  ///< as declared: separated by commas, some with a version
  std::string_view stanza;    ///< the whole entry

  bool IsInstalled() const { return state == "installed"; }
  bool IsHeld() const { return wanted == "hold"; }
  /// Whether files of the package are present, even if it is half-installed or not configured.
  bool IsUnpacked() const;
};

/// The packages in dpkg's database. Reads its files directly, which takes a fraction of the time of
/// a program that prints them.
class PackageDatabase {
 public:
  /// Throws KestrelException if the folder contains no database, or if one of its files cannot be
  /// read, is incomplete or damaged, or changes all the time. Packages are never silently omitted.
  explicit PackageDatabase(const std::string& folder = kDpkgFolder);
  PackageDatabase(const PackageDatabase&) = delete;
  PackageDatabase& operator=(const PackageDatabase&) = delete;

  /// Returns the packages sorted by name, then by architecture. Omits packages of which nothing is
  /// left but the wanted state.
  const std::vector<Package>& GetPackages() const { return packages_; }

  /// Returns the architecture of dpkg itself; empty if dpkg is not unpacked.
  std::string_view GetNativeArchitecture() const;

  /// Returns the package with that name, or with that "name:architecture". If a name has several
  /// architectures, prefers the unpacked one, then the native one. If there is no such package,
  /// throws KestrelException with the name and, for a virtual package, the packages that provide
  /// it.
  const Package& Require(const std::string& name) const;

  /// Returns the names of the unpacked packages that provide `name`.
  std::vector<std::string> FindProviders(std::string_view name) const;

 private:
  void ReadStatus(const std::string& path);
  void ReadUpdates(const std::string& folder);
  void Replace(const Package& package);
  const Package* Find(std::string_view name, std::string_view architecture) const;

  std::list<std::string> texts_;  // the packages point into them
  std::vector<Package> packages_;
};

}  // namespace Kestrel::Host

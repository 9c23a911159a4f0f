// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/package/ControlFile.h"

namespace Kestrel::Host {

/// The folder in which dpkg keeps its data.
extern const char* const kDpkgFolder;

/// The words for the states of a package of which something is here.
extern const std::vector<std::string> kPackageStates;

/// A package that dpkg knows. It points into the text of its database.
struct Package {
  std::string_view name;
  std::string_view architecture;
  std::string_view version;
  std::string_view
      wanted;  ///< what the administrator wants: install, hold, deinstall, purge, unknown
  std::string_view state;  ///< one of the words above
  bool isReinstallRequired = false;
  long sizeBytes = 0;  ///< 0 when it is not recorded
  std::string_view summary;
  std::string_view provides;  ///< as in the package: separated by commas, some with a version
  std::string_view stanza;    ///< all that is recorded

  bool IsInstalled() const { return state == "installed"; }
  bool IsHeld() const { return wanted == "hold"; }
  /// Whether its files are here, though it may not be set up.
  bool IsUnpacked() const;
};

/// The packages in the database of dpkg, read from its files: one read takes a fraction of the time
/// of a program that prints them.
class PackageDatabase {
 public:
  /// Throws KestrelException when the folder contains no database, and when one of its files cannot
  /// be read, is cut or damaged: never are there silently fewer packages.
  explicit PackageDatabase(const std::string& folder = kDpkgFolder);
  PackageDatabase(const PackageDatabase&) = delete;
  PackageDatabase& operator=(const PackageDatabase&) = delete;

  /// In the order of names, those of one name in the order of architectures. A package that left
  /// nothing but a note of what is wanted is not among them.
  const std::vector<Package>& GetPackages() const { return packages_; }

  /// The architecture of dpkg itself; empty when it is not among the packages.
  std::string_view GetNativeArchitecture() const;

  /// The package of that name, or of "name:architecture". If a name has several architectures, the
  /// first choice is the one that is unpacked, then the native one. Throws KestrelException with
  /// the name if there is none, and with the packages that provide it if it is virtual.
  const Package& Require(const std::string& name) const;

  /// The names of the unpacked packages that provide `name`.
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

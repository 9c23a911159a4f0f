// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::Host {

/// A shared library that is loaded when it is first needed and stays loaded.
///
/// It is for a library that few commands need: the plug-in is loaded for every command line, and
/// the libraries that it is linked with are loaded and relocated each time.
///
/// A class for a library derives from this one and names its functions:
///
///     struct Libarchive : LoadedLibrary {
///       Libarchive() : LoadedLibrary("libarchive.so.13") {}
///       KESTREL_LOADED(archive_read_new);
///     };
class LoadedLibrary {
 public:
  /// Loads the library of this name. Throws KestrelException with the reason of the loader if that
  /// fails.
  explicit LoadedLibrary(const char* name);

 protected:
  /// Returns the function or the object of this name. Throws KestrelException if the library does
  /// not have it.
  template <typename Symbol>
  Symbol* Find(const char* symbol) const {
    return reinterpret_cast<Symbol*>(FindAddress(symbol));
  }

 private:
  void* FindAddress(const char* symbol) const;

  void* handle_;
};

}  // namespace Kestrel::Host

/// Declares a member that points to the function or the object of the same name in the library.
#define KESTREL_LOADED(symbol) decltype(&::symbol) symbol = Find<decltype(::symbol)>(#symbol)

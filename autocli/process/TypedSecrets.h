// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Overwrites the memory of a string, including the unused part after its end, and makes it empty.
void Wipe(std::string& text);

/// Holds the secrets that are typed at a prompt while an object of this class exists. Without such
/// an object, the functions have no effect. Several objects share the secrets until the last object
/// is destroyed.
///
/// From the first prompt on, the process writes no core dump. The last destructor wipes the secrets
/// and restores the earlier settings for core dumps.
class TypedSecrets {
 public:
  TypedSecrets();
  ~TypedSecrets();
  TypedSecrets(const TypedSecrets&) = delete;
  TypedSecrets& operator=(const TypedSecrets&) = delete;

  /// Must be called before a secret is read.
  static void Expect();
  /// Keeps a copy of a secret that was read.
  static void Add(const std::string& secret);
  /// Wipes `text` if it is one of the secrets.
  static void WipeIfSecret(std::string& text);
  /// Whether a secret is held.
  static bool AreHeld() { return _areHeld; }
  /// Wipes `text` if a secret is held, because `text` may contain the secret.
  static void WipeIfHeld(std::string& text) {
    if (AreHeld()) {
      Wipe(text);
    }
  }
  /// Returns `message` with every secret replaced by "***", both as typed and as `escape` returns
  /// it.
  static std::string Mask(std::string message, std::string (*escape)(const std::string&) = nullptr);

 private:
  static inline bool _areHeld = false;
};

/// Wipes a string in its destructor if a secret is held.
class WipeAtEnd {
 public:
  explicit WipeAtEnd(std::string& text) : text_(text) {}
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;
  ~WipeAtEnd() { TypedSecrets::WipeIfHeld(text_); }

 private:
  std::string& text_;
};

}  // namespace Kestrel::AutoCli

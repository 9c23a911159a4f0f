// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <exception>
#include <string>
#include <type_traits>
#include <utility>

#include "kestrel/Export.h"

namespace Kestrel {

/// The only exception class of the library. Reports in one message what went wrong: usually a
/// mistake of a programmer or a plug-in, or a failure of the system.
///
/// It is thrown by value and caught by reference, even across the boundaries of shared objects.
class KESTREL_API KestrelException : public std::exception {
 public:
  /// Copies or moves `message`, which may be anything that a `std::string` can be constructed from.
  /// A null `const char*` counts as the empty string.
  template <typename T,
            typename = std::enable_if_t<std::is_constructible<std::string, T&&>::value &&
                                        !std::is_base_of<KestrelException, std::decay_t<T>>::value>>
  explicit KestrelException(T&& message) : message_(Text(std::forward<T>(message))) {}

  /// @{
  /// Copies the message.
  KestrelException(const KestrelException& other);
  KestrelException& operator=(const KestrelException& other);
  /// @}

  /// Defined in the library, so that the library, programs and plug-ins share one type.
  ~KestrelException() override;

  /// The message as a NUL-terminated string, valid until this exception is assigned to or
  /// destroyed.
  const char* what() const noexcept override;

 private:
  template <typename T>
  static std::string Text(T&& message) {
    if constexpr (std::is_convertible_v<T&&, const char*>) {
      const char* const characters = message;
      return characters == nullptr ? std::string() : std::string(characters);
    } else {
      return std::string(std::forward<T>(message));
    }
  }

  std::string message_;
};

}  // namespace Kestrel

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <vector>

#include "kestrel/Export.h"

namespace Kestrel::AutoCli {

/// The name of a formatter and the parameters for it, as chosen by the user or by a command's
/// defaults.
///
/// A plain value that can be copied and moved. Keys are compared byte by byte; a qualifier, as in
/// "fields:<TypeName>" or "units:<TypeName>.<FieldName>", is part of the key. Do not change an
/// object while a formatter uses it.
class KESTREL_API FormatParameters {
 public:
  /// Creates an object without a formatter name and without parameters.
  FormatParameters();

  /// @{
  /// Sets the name of the formatter; empty for none. A null `name` counts as empty.
  void SetFormatter(std::string name);
  void SetFormatter(const char* name);
  /// @}

  /// Returns the name of the formatter, empty if there is none. The reference is valid as long as
  /// the object exists.
  const std::string& GetFormatter() const;

  /// Returns all parameters, ordered by key.
  const std::map<std::string, std::string>& GetParameters() const;

  /// Returns whether there is a parameter `key`. Its value may be empty.
  bool HasParameter(const std::string& key) const;

  /// Returns the value of `key`, or an empty string if there is no such parameter. The reference is
  /// valid until the object is assigned to or destroyed.
  const std::string& GetParameter(const std::string& key) const;

  /// @{
  /// Adds a parameter or replaces its value. A null `key` or `value` counts as empty.
  void SetParameter(std::string key, std::string value);
  void SetParameter(const char* key, const char* value);
  /// @}

  /// Copies the formatter name of `other`, unless it is empty, and all parameters of `other`.
  /// Parameters that only this object has are kept. `other` may be this object.
  void OverrideValues(const FormatParameters& other);

  /// Returns the value of `key`, split at every comma. Pieces are not trimmed and may be empty, but
  /// a trailing comma is not followed by an empty piece. Returns no pieces if the value is empty or
  /// there is no such parameter.
  std::vector<std::string> GetParameterAsList(const std::string& key) const;

 private:
  std::string formatter_;
  std::map<std::string, std::string> parameters_;
};

}  // namespace Kestrel::AutoCli

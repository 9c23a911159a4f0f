// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <string>
#include <vector>

#include "kestrel/Export.h"

namespace Kestrel::AutoCli {

/// The choice of a formatter and of its parameters, carried from the command line and from a
/// command's defaults to the formatter.
///
/// A plain value: copy and move it freely. A key is an exact byte string; the qualifier that some
/// keys carry ("fields:<TypeName>", "units:<TypeName>.<FieldName>") is part of the key. Do not
/// change an object while a formatter reads it.
class KESTREL_API FormatParameters {
 public:
  /// Chooses no formatter and holds no parameters.
  FormatParameters();

  /// Replaces the formatter's name; an empty name chooses none. A null `name` counts as empty.
  void SetFormatter(std::string name);
  void SetFormatter(const char* name);

  /// The formatter's name, empty when none is chosen. Valid until the name is set again.
  const std::string& GetFormatter() const;

  /// Every parameter, ordered by key.
  const std::map<std::string, std::string>& GetParameters() const;

  /// Whether `key` is present, be its value empty or not.
  bool HasParameter(const std::string& key) const;

  /// The value of `key`, or the empty string when there is none. Nothing is thrown or inserted.
  /// The reference to a present value holds until that key is gone; the empty string stays.
  const std::string& GetParameter(const std::string& key) const;

  /// Adds the parameter, or replaces its value. A null `key` or `value` counts as empty.
  void SetParameter(std::string key, std::string value);
  void SetParameter(const char* key, const char* value);

  /// Lays `other` over this object: its formatter's name unless that is empty, and each of its
  /// parameters. What only this object has stays. `other` may be this object itself.
  void OverrideValues(const FormatParameters& other);

  /// The value of `key`, cut at every ",". Nothing is trimmed, empty pieces are kept, but the
  /// empty piece behind a trailing comma is not. An absent key and an empty value give no pieces.
  std::vector<std::string> GetParameterAsList(const std::string& key) const;

 private:
  std::string formatter_;
  std::map<std::string, std::string> parameters_;
};

}  // namespace Kestrel::AutoCli

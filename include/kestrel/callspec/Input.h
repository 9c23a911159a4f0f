// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::CallSpec {

/// The input of one call: the values of each parameter, as typed, and the values of call contexts.
///
/// An absent value does not make a getter throw. A null `const char*` counts as the empty string.
class KESTREL_API Input {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes an input without parameters, contexts or a declaration.
  static std::shared_ptr<Input> New();

  /// For `New` only; no other caller can make the flag.
  explicit Input(FactoryFlag flag);
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  virtual ~Input();

  /// Appends `value` to the values of the parameter `name`, without any check. For a flag, pass
  /// the empty string.
  void AddParameter(const std::string& name, const std::string& value);
  /// Appends each value in turn. An empty vector changes nothing: an absent parameter stays absent.
  void AddParameter(const std::string& name, const std::vector<std::string>& values);

  /// Sets the declaration of the parameters, which is shared. Values that were added under a short
  /// name are moved to the end of those under the long name. Throws KestrelException when `spec` is
  /// null.
  void SetInputSpec(std::shared_ptr<InputSpec> spec);

  /// All values by parameter name. The reference is valid as long as this object exists.
  const std::map<std::string, std::vector<std::string>>& GetParameters() const;

  /// Whether the parameter was given.
  bool HasParameter(const std::string& name) const;
  /// As above.
  bool HasParameter(const char* name) const;

  /// Whether the parameter was given; its type does not matter.
  bool IsFlagSet(const std::string& name) const;
  /// As above.
  bool IsFlagSet(const char* name) const;

  /// The declared type of a parameter. Throws KestrelException when no such parameter is declared
  /// or no declaration was set.
  ParameterType GetParameterType(const std::string& name) const;

  /// The value of a parameter; the empty string unless exactly one value was given. The reference
  /// is valid until the parameters change.
  ///
  /// Throws KestrelException when `GetParameterType` does, and when the parameter is a flag or can
  /// have several values.
  const std::string& GetParameter(const std::string& name) const;
  /// As above.
  const std::string& GetParameter(const char* name) const;

  /// The value of a parameter as an integer, read as `ParameterSpec::GetInt` does; -1 unless
  /// exactly one value was given and is an integer, so validate first. Throws as `GetParameter`
  /// does.
  std::int64_t GetParameterInt(const std::string& name) const;

  /// Whether the value of a parameter is one of 1, yes, y, true, True, t and T. Throws as
  /// `GetParameter` does.
  bool GetParameterBool(const std::string& name) const;

  /// Appends all values given for `name` to `out`, whatever the declared type.
  void GetParameterList(const std::string& name, std::vector<std::string>& out) const;

  /// Appends the integers among the values given for `name` to `out`; skips other values.
  void GetParameterIntList(const std::string& name, std::vector<std::int64_t>& out) const;

  /// Appends a boolean for each value given for `name` to `out`: true for the words of
  /// `GetParameterBool`, false for everything else.
  void GetParameterBoolList(const std::string& name, std::vector<bool>& out) const;

  /// The values given for `name`, joined with `separator`; if `quote` is set, with one double quote
  /// before and one after the whole string. The values are not escaped.
  std::string GetParameterListAsString(const std::string& name, char separator, bool quote) const;

  /// Sets or replaces the value of a context.
  void SetContext(const std::string& name, const std::string& value);

  /// The value of a context, the empty string when it is not set. The reference is valid until the
  /// contexts change.
  const std::string& GetContext(const std::string& name) const;

 protected:
  Input();

 private:
  const std::vector<std::string>& GetValues(const std::string& name) const;

  std::map<std::string, std::vector<std::string>> parameters_;
  std::map<std::string, std::string> contexts_;
  std::shared_ptr<InputSpec> spec_;
};

}  // namespace Kestrel::CallSpec

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

/// What one call received: the raw values of each parameter, and the values of call contexts.
///
/// A getter never throws for a value that is merely absent. Every null `const char*` stands for the
/// empty text.
class KESTREL_API Input {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes an input without parameters, contexts and declaration.
  static std::shared_ptr<Input> New();

  explicit Input(FactoryFlag flag);
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  virtual ~Input();

  /// Appends a value to those of the parameter `name`, unchecked. A flag is given with one empty
  /// value.
  void AddParameter(const std::string& name, const std::string& value);
  /// Appends each value in turn. No values leave the parameter as it was, absent or not.
  void AddParameter(const std::string& name, const std::vector<std::string>& values);

  /// Shares the declaration of the parameters, and moves what was given under a short name to the
  /// long name, behind the values given there. Throws KestrelException when `spec` is null.
  void SetInputSpec(std::shared_ptr<InputSpec> spec);

  /// All values by parameter name. The reference lives as long as this object.
  const std::map<std::string, std::vector<std::string>>& GetParameters() const;

  /// Whether the parameter was given.
  bool HasParameter(const std::string& name) const;
  /// As above.
  bool HasParameter(const char* name) const;

  /// Whether the parameter was given; its type does not matter.
  bool IsFlagSet(const std::string& name) const;
  /// As above.
  bool IsFlagSet(const char* name) const;

  /// The declared type of a parameter. Throws KestrelException when none of that name is declared,
  /// or no declaration was set.
  ParameterType GetParameterType(const std::string& name) const;

  /// The value of a parameter; the empty text unless exactly one was given. The reference lives
  /// until the parameters change, the one to the empty text for ever.
  ///
  /// Throws KestrelException when the parameter is not declared, is a flag, or can have several
  /// values.
  const std::string& GetParameter(const std::string& name) const;
  /// As above.
  const std::string& GetParameter(const char* name) const;

  /// The value of a parameter as an integer, by the rule of ParameterSpec::GetInt; -1 when it is no
  /// integer or absent, so validate first. Throws as GetParameter does.
  std::int64_t GetParameterInt(const std::string& name) const;

  /// Whether the value of a parameter is one of 1, yes, y, true, True, t, T. Throws as GetParameter
  /// does.
  bool GetParameterBool(const std::string& name) const;

  /// Appends all values given for `name` to `out`, whatever the declared type.
  void GetParameterList(const std::string& name, std::vector<std::string>& out) const;

  /// Appends the integers among the values given for `name` to `out`; other values are left out.
  void GetParameterIntList(const std::string& name, std::vector<std::int64_t>& out) const;

  /// Appends one boolean for each value given for `name` to `out`, false for every word but those
  /// of GetParameterBool.
  void GetParameterBoolList(const std::string& name, std::vector<bool>& out) const;

  /// The values given for `name` with `separator` between them; with `quote`, one double quote
  /// before and one after the whole. The values are not escaped.
  std::string GetParameterListAsString(const std::string& name, char separator, bool quote) const;

  /// Sets or replaces the value of a context.
  void SetContext(const std::string& name, const std::string& value);

  /// The value of a context, or the same empty text that GetParameter gives.
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

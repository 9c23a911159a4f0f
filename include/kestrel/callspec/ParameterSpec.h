// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"

namespace Kestrel::CallSpec {

/// The type of a parameter. The numbers never change; the number of a list type is that of its
/// scalar type plus 4.
enum ParameterType : std::int32_t {
  String = 0,      ///< Any string.
  Int = 1,         ///< An integer.
  Bool = 2,        ///< A boolean word; see `ParameterSpec::GetBool`.
  Flag = 3,        ///< Given or not given, without a value.
  StringList = 4,  ///< Any strings, one for each time that the parameter is given.
  IntList = 5,     ///< Integers, one for each time that the parameter is given.
  BoolList = 6     ///< Boolean words, one for each time that the parameter is given.
};

/// The declaration of one parameter of a command, which also checks the values given for it.
///
/// A mistake in the declaration throws KestrelException and leaves the declaration unchanged; a
/// mistake in a value becomes an error message of the call's output. A null `const char*` counts as
/// the empty string.
class KESTREL_API ParameterSpec {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a required parameter that is not secret, without a short name, description or
  /// constraint. Throws KestrelException when the name is empty or contains anything except the
  /// letters a to z, digits and '-'.
  static std::shared_ptr<ParameterSpec> New(const std::string& name, ParameterType type);
  /// As above; moves the name.
  static std::shared_ptr<ParameterSpec> New(std::string&& name, ParameterType type);
  /// As above.
  static std::shared_ptr<ParameterSpec> New(const char* name, ParameterType type);

  /// For `New` only; no other caller can make the flag.
  ParameterSpec(std::string&& name, ParameterType type, FactoryFlag flag);
  ParameterSpec(const ParameterSpec&) = delete;
  ParameterSpec& operator=(const ParameterSpec&) = delete;
  ~ParameterSpec();

  /// The long name, which follows two dashes on a command line.
  const std::string& GetName() const;

  /// The type; it never changes.
  ParameterType GetParameterType() const;
  /// Equivalent to `GetParameterType`.
  ParameterType GetType() const;

  /// The short name, one character; empty when there is none.
  const std::string& GetShortName() const;

  /// Whether every call needs this parameter.
  bool IsRequired() const;

  /// Whether the value is secret: if the parameter is given without a value, the user is prompted
  /// for the value, and the terminal does not show the input.
  bool IsSecret() const;

  /// The constraint, null when there is none.
  const std::shared_ptr<ParameterConstraint>& GetConstraint() const;

  /// Sets the short name, one of a-z, A-Z and 0-9. Throws KestrelException for anything else.
  void SetShortName(std::string shortName);
  /// As above.
  void SetShortName(const char* shortName);

  /// Sets the description. It may contain the placeholders %REGEX%, %ENUM% and %FULLENUM%; see
  /// `GetDescription`.
  void SetDescription(std::string description);
  /// As above.
  void SetDescription(const char* description);

  /// Sets whether every call needs this parameter; initially true.
  void SetRequired(bool required);

  /// Sets whether the value is secret; initially false. Throws KestrelException for every type
  /// except `String`, even if `secret` is false.
  void SetSecret(bool secret);

  /// Sets the constraint, which is shared. Null is ignored. Throws KestrelException unless the
  /// kinds match: `IntRange` and `IntEnum` need the type `Int` or `IntList`, `StringEnum` and
  /// `StringRegex` the type `String` or `StringList`; `NoConstraint` matches no type.
  void SetConstraint(const std::shared_ptr<ParameterConstraint>& constraint);

  /// Whether the parameter can have several values, that is, whether its type is a list type.
  bool AllowMultiple() const;

  /// The description. If `substitute` is set and there is a constraint, the first placeholder of
  /// each kind is replaced: %REGEX% and %ENUM% by the constraint's `ToString()`, %FULLENUM% by one
  /// line for each allowed string that has a description.
  std::string GetDescription(bool substitute) const;

  /// Reads a decimal integer: optional white space, an optional sign, then digits up to the end of
  /// `text`. A number that does not fit into 64 bits is replaced by the nearest one that does.
  /// Returns false and leaves `out` unchanged when `text` is anything else.
  static bool GetInt(const std::string& text, std::int64_t& out);

  /// Reads a boolean word: 1, yes, y, true, True, t and T for true; 0, no, n, false, False, f and F
  /// for false. Returns false and leaves `out` unchanged when `text` is anything else.
  static bool GetBool(const std::string& text, bool& out);

  /// Checks the values that a call contains for this parameter. Appends a message to `output` for
  /// each problem.
  ///
  /// Returns false when a value is invalid. No value at all, or too many, appends a message but
  /// leaves the result true, so a caller must look at the messages too. Throws KestrelException
  /// when there is a message and `output` is null, and whatever the constraint's `Validate` throws.
  bool Validate(const std::vector<std::string>& values,
                const std::shared_ptr<Output>& output) const;

 private:
  bool ValidateType(const std::string& value, const std::shared_ptr<Output>& output) const;

  ParameterType type_;
  std::string name_;
  std::string shortName_;
  std::string description_;
  std::shared_ptr<ParameterConstraint> constraint_;
  bool isRequired_;
  bool isSecret_;
};

}  // namespace Kestrel::CallSpec

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

/// The type of a parameter. The numbers are fixed: a list type is its scalar type plus 4.
enum ParameterType : std::int32_t {
  String = 0,      ///< Any text.
  Int = 1,         ///< An integer.
  Bool = 2,        ///< A boolean word.
  Flag = 3,        ///< Given or not given, without a value.
  StringList = 4,  ///< Any texts, one for each time that the parameter is given.
  IntList = 5,     ///< Integers.
  BoolList = 6     ///< Boolean words.
};

/// Declares one parameter of a command, and checks the values that a call gives for it.
///
/// Mistakes of the declaration throw KestrelException and leave the declaration as it was; mistakes
/// in values become error messages of the call's output. Every null `const char*` stands for the
/// empty text.
class KESTREL_API ParameterSpec {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a required parameter without short name, description and constraint, and not secret.
  /// Throws KestrelException when the name is empty or holds anything but lower-case letters,
  /// digits and '-'.
  static std::shared_ptr<ParameterSpec> New(const std::string& name, ParameterType type);
  /// As above; takes the name over.
  static std::shared_ptr<ParameterSpec> New(std::string&& name, ParameterType type);
  /// As above.
  static std::shared_ptr<ParameterSpec> New(const char* name, ParameterType type);

  ParameterSpec(std::string&& name, ParameterType type, FactoryFlag flag);
  ParameterSpec(const ParameterSpec&) = delete;
  ParameterSpec& operator=(const ParameterSpec&) = delete;
  ~ParameterSpec();

  /// The long name, written after two dashes on a command line.
  const std::string& GetName() const;

  /// The type, fixed when the declaration was made.
  ParameterType GetParameterType() const;
  /// The same as GetParameterType.
  ParameterType GetType() const;

  /// The short name: one character, or empty.
  const std::string& GetShortName() const;

  /// Whether a call must give this parameter.
  bool IsRequired() const;

  /// Whether the value is typed unseen when a command line leaves it out.
  bool IsSecret() const;

  /// The constraint, null when there is none.
  const std::shared_ptr<ParameterConstraint>& GetConstraint() const;

  /// Sets the short name, one of a-z, A-Z and 0-9. Throws KestrelException on anything else.
  void SetShortName(std::string shortName);
  /// As above.
  void SetShortName(const char* shortName);

  /// Sets the description. It may hold the markers %REGEX%, %ENUM% and %FULLENUM%.
  void SetDescription(std::string description);
  /// As above.
  void SetDescription(const char* description);

  /// Says whether a call must give this parameter; true at first.
  void SetRequired(bool required);

  /// Says whether the value is secret; false at first. Throws KestrelException for every type but
  /// `String`, whatever the value.
  void SetSecret(bool secret);

  /// Shares `constraint`: integer kinds suit `Int` and `IntList`, string kinds `String` and
  /// `StringList`. Any other pair throws KestrelException; null is ignored.
  void SetConstraint(const std::shared_ptr<ParameterConstraint>& constraint);

  /// Whether the type is one of the list types.
  bool AllowMultiple() const;

  /// The description as it was set; with `substitute` and a constraint, the first marker of each
  /// kind is replaced by what the constraint accepts: %REGEX% and %ENUM% by its text, %FULLENUM% by
  /// a line for each described string.
  std::string GetDescription(bool substitute) const;

  /// Reads a decimal integer: leading white space and one sign pass, the rest must be digits, and
  /// a number beyond 64 bits becomes the nearest bound. Returns false, and leaves `out` alone, when
  /// the text is anything else.
  static bool GetInt(const std::string& text, std::int64_t& out);

  /// Reads a boolean word, case-sensitively: 1, yes, y, true, True, t, T or 0, no, n, false, False,
  /// f, F. Returns false, and leaves `out` alone, when the text is anything else.
  static bool GetBool(const std::string& text, bool& out);

  /// Checks all values that a call gives for this parameter and appends a message for each problem
  /// to `output`.
  ///
  /// Returns false when a value was refused. No value at all, or too many, gives a message but no
  /// false: judge the call by its messages. Throws KestrelException when there is a message and
  /// `output` is null, and what the constraint throws for a bad regular expression.
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

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

/// The kind of a constraint; the numbers are fixed.
enum ParameterConstraintType : std::int32_t {
  NoConstraint = 0,  ///< Every value.
  IntRange = 1,      ///< An integer between two bounds, both inclusive.
  IntEnum = 2,       ///< One of a list of integers.
  StringEnum = 3,    ///< One of a list of strings, each with an optional description.
  StringRegex = 4    ///< A string that a regular expression matches as a whole.
};

/// Narrows the values that one parameter accepts beyond its type.
///
/// Built by the code that declares a command and not changed afterwards. The setters do not look at
/// the kind: data of another kind is stored and never read.
class KESTREL_API ParameterConstraint {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a constraint of that kind: bounds 0 and 0, empty lists, empty regular expression.
  static std::shared_ptr<ParameterConstraint> New(ParameterConstraintType type);

  ParameterConstraint(ParameterConstraintType type, FactoryFlag flag);
  ParameterConstraint(const ParameterConstraint&) = delete;
  ParameterConstraint& operator=(const ParameterConstraint&) = delete;
  ~ParameterConstraint();

  /// The kind, fixed when the constraint was made.
  ParameterConstraintType GetType() const;

  /// Sets both bounds, which belong to the range; they may be equal. Throws KestrelException when
  /// `min` is greater than `max`, and then keeps the bounds that it had.
  void SetIntRange(std::int64_t min, std::int64_t max);

  /// Copies the bounds out.
  void GetIntRange(std::int64_t& min, std::int64_t& max) const;

  /// Appends an allowed integer. Throws KestrelException when it is in the list already.
  void AddIntEnum(std::int64_t value);

  /// Appends an allowed string, compared exactly; an empty description is not kept. Throws
  /// KestrelException when the string is in the list already, and then changes nothing.
  void AddStringEnum(std::string value, std::string description = std::string());
  /// As above; null stands for the empty text.
  void AddStringEnum(const char* value, const char* description);
  /// As above, without a description.
  void AddStringEnum(const char* value);

  /// Sets the regular expression (Perl syntax). It is compiled when a value is validated, not here.
  void SetStringRegex(const std::string& regex);

  /// The allowed integers in the order added. This reference and the next three live as long as
  /// this object.
  const std::vector<std::int64_t>& GetIntEnum() const;

  /// The allowed strings in the order added.
  const std::vector<std::string>& GetStringEnum() const;

  /// The descriptions of those allowed strings that have one, sorted by the string.
  const std::map<std::string, std::string>& GetStringEnumWithDesc() const;

  /// The text of the regular expression.
  const std::string& GetStringRegex() const;

  /// What the constraint accepts, in words for a message or a help page.
  std::string ToString() const;

  /// Whether the constraint accepts `value`, given for the parameter called `name`.
  ///
  /// A refused value appends one message to `output`; an accepted one appends none. Throws
  /// KestrelException when there is a message and `output` is null. A regular expression that does
  /// not compile throws the regular-expression library's error, a std::runtime_error.
  bool Validate(const std::string& value, const std::string& name,
                const std::shared_ptr<Output>& output) const;

 private:
  struct CompiledRegex;

  bool ValidateInteger(const std::string& value, const std::string& name,
                       const std::shared_ptr<Output>& output) const;
  bool ValidateString(const std::string& value, const std::string& name,
                      const std::shared_ptr<Output>& output) const;
  bool ValidateRegex(const std::string& value, const std::string& name,
                     const std::shared_ptr<Output>& output) const;
  const CompiledRegex& Compile() const;

  ParameterConstraintType type_;
  std::int64_t minimum_;
  std::int64_t maximum_;
  std::vector<std::int64_t> integers_;
  std::vector<std::string> strings_;
  std::string regex_;
  std::map<std::string, std::string> descriptions_;
  // The values of a long list once more, for the search; empty while the list is short.
  std::set<std::int64_t> integerIndex_;
  std::set<std::string> stringIndex_;
  mutable std::shared_ptr<const CompiledRegex> compiledRegex_;
};

}  // namespace Kestrel::CallSpec

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

/// The kind of a constraint. The numbers never change.
enum ParameterConstraintType : std::int32_t {
  NoConstraint = 0,  ///< Accepts every value.
  IntRange = 1,      ///< Accepts an integer between two bounds, both inclusive.
  IntEnum = 2,       ///< Accepts one of a list of integers.
  StringEnum = 3,    ///< Accepts one of a list of strings, each with an optional description.
  StringRegex = 4    ///< Accepts a string that a regular expression matches as a whole.
};

/// Restricts the values of one parameter further than its type does.
///
/// It is built by the code that declares a command and not changed afterwards. The setters do not
/// check the kind: data of another kind is stored, but `Validate` and `ToString` ignore it.
class KESTREL_API ParameterConstraint {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a constraint of that kind, with the bounds 0 and 0, empty lists and an empty regular
  /// expression.
  static std::shared_ptr<ParameterConstraint> New(ParameterConstraintType type);

  /// For `New` only; no other caller can make the flag.
  ParameterConstraint(ParameterConstraintType type, FactoryFlag flag);
  ParameterConstraint(const ParameterConstraint&) = delete;
  ParameterConstraint& operator=(const ParameterConstraint&) = delete;
  ~ParameterConstraint();

  /// The kind; it never changes.
  ParameterConstraintType GetType() const;

  /// Sets both bounds, which are part of the range and may be equal. Throws KestrelException when
  /// `min` is greater than `max`; the earlier bounds are kept then.
  void SetIntRange(std::int64_t min, std::int64_t max);

  /// Sets `min` and `max` to the bounds.
  void GetIntRange(std::int64_t& min, std::int64_t& max) const;

  /// Adds an allowed integer. Throws KestrelException when it is in the list already.
  void AddIntEnum(std::int64_t value);

  /// Adds an allowed string; values are compared with it exactly. An empty description counts as
  /// none. Throws KestrelException and changes nothing when the string is in the list already.
  void AddStringEnum(std::string value, std::string description = std::string());
  /// As above; null counts as the empty string.
  void AddStringEnum(const char* value, const char* description);
  /// As above, without a description.
  void AddStringEnum(const char* value);

  /// Sets the regular expression, in Perl syntax. It is compiled when a value is validated, not
  /// here.
  void SetStringRegex(const std::string& regex);

  /// The allowed integers in the order in which they were added. The reference, like those that the
  /// next three operations return, is valid as long as this object exists.
  const std::vector<std::int64_t>& GetIntEnum() const;

  /// The allowed strings in the order in which they were added.
  const std::vector<std::string>& GetStringEnum() const;

  /// The descriptions, by allowed string. Strings without a description are absent.
  const std::map<std::string, std::string>& GetStringEnumWithDesc() const;

  /// The regular expression.
  const std::string& GetStringRegex() const;

  /// Describes what the constraint accepts, for messages and help pages.
  std::string ToString() const;

  /// Whether the constraint accepts `value`, which was given for the parameter `name`. Appends one
  /// message to `output` if not.
  ///
  /// Throws KestrelException when there is a message and `output` is null, or when the part of the
  /// library for regular expressions cannot be loaded. Throws a `std::runtime_error` when the
  /// regular expression does not compile.
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
  // A copy of the values of a long list, for fast lookup; empty while the list is short.
  std::set<std::int64_t> integerIndex_;
  std::set<std::string> stringIndex_;
  mutable std::shared_ptr<const CompiledRegex> compiledRegex_;
};

}  // namespace Kestrel::CallSpec

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::CallSpec {

class Input;

/// The declared parameters of one command, and the call contexts that it supports.
class KESTREL_API InputSpec {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a declaration without parameters or contexts.
  static std::shared_ptr<InputSpec> New();

  /// For `New` only; no other caller can make the flag.
  explicit InputSpec(FactoryFlag flag);
  InputSpec(const InputSpec&) = delete;
  InputSpec& operator=(const InputSpec&) = delete;
  ~InputSpec();

  /// Adds `spec`, which is shared, at its place in the order of names.
  ///
  /// Throws KestrelException and changes nothing when `spec` is null, when its name has fewer than
  /// two characters, or when its name or short name is taken.
  void AddParameter(const std::shared_ptr<ParameterSpec>& spec);

  /// The parameters in ascending byte order of their names. The reference is valid as long as this
  /// object exists, and shows later additions.
  const std::vector<std::shared_ptr<ParameterSpec>>& GetParameters() const;

  /// Adds the name of a supported context; adding it again changes nothing.
  void SetContextSupported(const std::string& name);

  /// Whether the context is supported.
  bool IsContextSupported(const std::string& name) const;

  /// Checks the input of a call against the declaration.
  ///
  /// Appends a message to `output` for each problem: first the problems of the given parameters,
  /// then the missing required parameters, each in ascending byte order of the names. An input that
  /// contains "help" is valid whatever else it contains.
  ///
  /// Returns false when a parameter is unknown, a value is invalid or a required parameter is
  /// missing. A wrong number of values appends a message but leaves the result true, so a caller
  /// must look at the messages too. Throws KestrelException when `input` is null, or when there is
  /// a message and `output` is null. Exceptions of the `Validate` of a constraint pass through.
  bool Validate(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output) const;

 private:
  // By name. A key refers to the name in its parameter.
  using DeclaredParameters = std::map<std::string_view, std::shared_ptr<ParameterSpec>>;

  void CheckNames(const ParameterSpec& spec) const;
  void CheckShortName(const ParameterSpec& spec, DeclaredParameters::const_iterator end) const;
  bool ValidateGiven(const Input& input, const std::shared_ptr<Output>& output) const;
  bool ValidateRequired(const Input& input, const std::shared_ptr<Output>& output) const;

  DeclaredParameters declared_;
  // The same parameters as a list. It is made on the first request, because inserting a parameter
  // into a list moves those after it. Once the list exists, adding a parameter updates it, because
  // callers may keep a reference to it.
  mutable std::vector<std::shared_ptr<ParameterSpec>> listed_;
  mutable bool isListed_;
  std::set<std::string> contexts_;
};

}  // namespace Kestrel::CallSpec

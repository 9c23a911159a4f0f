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
  /// Makes a declaration without parameters and contexts.
  static std::shared_ptr<InputSpec> New();

  explicit InputSpec(FactoryFlag flag);
  InputSpec(const InputSpec&) = delete;
  InputSpec& operator=(const InputSpec&) = delete;
  ~InputSpec();

  /// Shares `spec` and puts it into its place in the order of names.
  ///
  /// Throws KestrelException, and changes nothing, when `spec` is null, its name has fewer than two
  /// characters, or its name or short name is taken.
  void AddParameter(const std::shared_ptr<ParameterSpec>& spec);

  /// The parameters, always in ascending byte order of their names. The reference lives as long as
  /// this object and shows later additions.
  const std::vector<std::shared_ptr<ParameterSpec>>& GetParameters() const;

  /// Adds a context name; adding it again changes nothing.
  void SetContextSupported(const std::string& name);

  /// Whether the context name was added.
  bool IsContextSupported(const std::string& name) const;

  /// Checks what a call received against the declaration.
  ///
  /// Every problem appends a message to `output`: unknown parameters and bad values in the order of
  /// the names given, then missing required parameters in the order of declared names. An input
  /// that holds "help" is valid whatever else it holds. Returns false when a parameter is unknown,
  /// missing or has a refused value; a value too many or too few gives a message and no false, so
  /// judge the call by its messages. Throws KestrelException when `input` is null, or when there is
  /// a message and `output` is null.
  bool Validate(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output) const;

 private:
  // By name; the text of a key is that of its parameter.
  using DeclaredParameters = std::map<std::string_view, std::shared_ptr<ParameterSpec>>;

  void CheckNames(const ParameterSpec& spec) const;
  void CheckShortName(const ParameterSpec& spec, DeclaredParameters::const_iterator end) const;
  bool ValidateGiven(const Input& input, const std::shared_ptr<Output>& output) const;
  bool ValidateRequired(const Input& input, const std::shared_ptr<Output>& output) const;

  DeclaredParameters declared_;
  // The same as a list. It is made when it is first asked for, and kept in step from then on, since
  // its reader may hold on to it: until then an addition moves no other parameter.
  mutable std::vector<std::shared_ptr<ParameterSpec>> listed_;
  mutable bool isListed_;
  std::set<std::string> contexts_;
};

}  // namespace Kestrel::CallSpec

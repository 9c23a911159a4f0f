// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/ParameterSpec.h>

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace Kestrel::Host {

/// Declares a parameter, as in `Parameter("user", CallSpec::String, "...").Short("u").AddTo(spec)`.
/// The parameter is optional unless `Required` is called.
class Parameter {
 public:
  /// One of the words that a parameter accepts. In the description of the parameter, the
  /// placeholder %FULLENUM% is replaced by a list of the words; words without a description are
  /// omitted.
  struct Word {
    const char* value;
    const char* description;
  };

  Parameter(const char* name, CallSpec::ParameterType type, const char* description);

  Parameter& Short(const char* shortName);
  Parameter& Required();
  /// Prompts for the value, without echo, if the command line has the parameter without a value.
  /// For strings only.
  Parameter& Secret();

  // A parameter has at most one constraint.
  Parameter& Between(std::int64_t minimum, std::int64_t maximum);
  Parameter& OneOf(std::initializer_list<std::int64_t> values);
  Parameter& OneOf(std::initializer_list<Word> words);
  Parameter& Matching(const char* regex);

  void AddTo(CallSpec::InputSpec& spec) const;

 private:
  std::shared_ptr<CallSpec::ParameterSpec> spec_;
};

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/ParameterSpec.h>

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace Kestrel::Host {

/// A parameter under declaration, optional unless `Required` is called:
/// `Parameter("user", CallSpec::String, "...").Short("u").AddTo(spec)`.
class Parameter {
 public:
  /// One of the words that a parameter accepts; without a description it is left out of the
  /// listing that %FULLENUM% stands for.
  struct Word {
    const char* value;
    const char* description;
  };

  Parameter(const char* name, CallSpec::ParameterType type, const char* description);

  Parameter& Short(const char* shortName);
  Parameter& Required();
  /// Typed unseen when the command line leaves the value out. Text parameters only.
  Parameter& Secret();

  // What is accepted; one of these at most.
  Parameter& Between(std::int64_t minimum, std::int64_t maximum);
  Parameter& OneOf(std::initializer_list<std::int64_t> values);
  Parameter& OneOf(std::initializer_list<Word> words);
  Parameter& Matching(const char* regex);

  void AddTo(CallSpec::InputSpec& spec) const;

 private:
  std::shared_ptr<CallSpec::ParameterSpec> spec_;
};

}  // namespace Kestrel::Host

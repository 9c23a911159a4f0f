// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandSpec.h"
#include "tools/explain/Explanation.h"
#include "vexil/CommandLine.h"

namespace Kestrel::Explain {

/// The parameters of a command in one command line. Never prompts for a secret.
class ExplainedCall {
 public:
  ExplainedCall(AutoCli::CommandSpec& command, const Vexil::CommandLine& line);

  /// Returns the messages of the parser about the line or, if there are none, those about its
  /// values, with "***" in place of each value of a secret. A secret without a value is treated as
  /// valid.
  std::vector<std::string> Validate() const;

  std::vector<ExplainedParameter> DescribeParameters() const;

  bool IsHelpWanted() const { return input_->HasParameter("help"); }

  /// The values as the command receives them. A secret that was given without a value has one empty
  /// value.
  const std::shared_ptr<AutoCli::CommandInput>& GetInput() const { return input_; }

  /// Returns a copy of the input with `placeholder` in place of each value of a secret.
  std::shared_ptr<AutoCli::CommandInput> HideSecrets(const std::string& placeholder) const;

  /// Returns the message `error` with "***" in place of each value of a secret.
  std::string HideSecretsIn(const std::string& error) const;

  /// Returns any other text with "***" wherever it contains a value of a secret.
  std::string Mask(std::string text) const;

 private:
  const CallSpec::ParameterSpec* FindParameter(const std::string& anyName) const;
  void ReadLine(const Vexil::CommandLine& line);
  void ReadOption(const Vexil::TypedOption& option, std::vector<std::string>& tokens);
  std::shared_ptr<AutoCli::CommandInput> CopyInput(bool withPrompted,
                                                   const std::string* placeholder) const;
  bool IsPrompted(const std::string& name) const;
  ExplainedParameter Describe(const CallSpec::ParameterSpec& parameter) const;

  std::shared_ptr<CallSpec::InputSpec> spec_;
  std::shared_ptr<AutoCli::CommandInput> input_;
  std::vector<std::string> parseErrors_;
  std::vector<std::string> prompted_;  // the long names of secrets without a value
  std::vector<std::string> secrets_;   // values
  std::vector<std::pair<std::string, std::string>> spellings_;  // by long name
};

}  // namespace Kestrel::Explain

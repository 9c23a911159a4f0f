// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"

namespace Kestrel::AutoCli {

/// A command whose work is a shell command line: the caller's parameters are put into a template,
/// the shell runs the result, and the child's standard output, a value document, is the result.
///
/// Markers of a template, NAME being a parameter's name: `$val{NAME}`, `$if{NAME,text}`,
/// `$list{NAME,'c',true|false}` and `$multilist{NAME,prefix,true|false}`.
class KESTREL_API ExtensionCommand : public Command {
  struct ConstructionKey {
    explicit ConstructionKey() = default;
  };

 public:
  /// A command without parameters, declared output and templates.
  static std::shared_ptr<ExtensionCommand> New();

  explicit ExtensionCommand(ConstructionKey);
  ~ExtensionCommand() override;

  /// The declared parameters and output; shared, and read when the command is first asked for them.
  void SetInputSpec(const std::shared_ptr<CallSpec::InputSpec>& spec);
  void SetOutputSpec(const std::shared_ptr<CallSpec::OutputSpec>& spec);
  /// The template of the command line, and that of the data written to its standard input.
  void SetExecuteCommand(const std::string& commandTemplate);
  void SetStdin(const std::string& stdinTemplate);

  /// The specifications as set. Throw KestrelException when they never were.
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;

  /// Runs the command line and sets the value that it printed as the root of `output`, or adds
  /// error messages to it. Throws KestrelException when the child cannot be run.
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;

  /// The template of the standard input (`forStdin`) or of the command line with the parameters of
  /// `input` put in. In a command line values are made safe for the shell, except where the
  /// marker's form says otherwise, and lose their NUL bytes, which no command line can carry.
  /// Throws KestrelException when a marker does not fit its parameter's type.
  std::string SubstituteInput(const std::shared_ptr<CallSpec::Input>& input, bool forStdin);

  /// `value` with a backslash before every character that `isBadChar` names.
  static std::string SanitizeInput(const std::string& value);
  /// `value` without any `c`.
  static std::string SanitizeChar(const std::string& value, char c);
  /// Whether the shell gives `c` a meaning of its own: newline and ! " $ & ' ( ) * ; < > \ ^ ` |
  static bool isBadChar(char c);
  /// The size, both delimiters included, of the balanced block that opens at `position` of `text`;
  /// 0 when none opens there or it is not closed before `length`.
  static std::size_t FindPairedTokenSize(const char* text, std::size_t position, std::size_t length,
                                         char open, char close);

 private:
  std::shared_ptr<CallSpec::InputSpec> declaredInput_;
  std::shared_ptr<CallSpec::OutputSpec> declaredOutput_;
  std::string executeTemplate_;
  std::string stdinTemplate_;
};

}  // namespace Kestrel::AutoCli

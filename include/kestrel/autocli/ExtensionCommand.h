// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"

namespace Kestrel::AutoCli {

/// A command that runs a shell command line and reads its result from standard output.
///
/// The command line is a template into which the parameters of the call are inserted. What the
/// child process prints must be a value document (see `XmlUtil_ParseXmlOutput`), which becomes the
/// result.
///
/// The markers of a template are `$val{NAME}`, `$if{NAME,text}`, `$list{NAME,'c',true|false}` and
/// `$multilist{NAME,prefix,true|false}`; NAME is the name of a parameter.
class KESTREL_API ExtensionCommand : public Command {
  struct ConstructionKey {
    explicit ConstructionKey() = default;
  };

 public:
  /// Makes a command without specifications and with empty templates.
  static std::shared_ptr<ExtensionCommand> New();

  /// For `New` only; no other caller can make the key.
  explicit ExtensionCommand(ConstructionKey);
  ~ExtensionCommand() override;

  /// @{
  /// Set the declared parameters and output, which the command shares with the caller. Call these
  /// before the command is used, and do not change the specifications afterwards.
  void SetInputSpec(const std::shared_ptr<CallSpec::InputSpec>& spec);
  void SetOutputSpec(const std::shared_ptr<CallSpec::OutputSpec>& spec);
  /// @}

  /// Sets the template of the command line.
  void SetExecuteCommand(const std::string& commandTemplate);
  /// Sets the template of what is written to the standard input of the child process.
  void SetStdin(const std::string& stdinTemplate);

  /// Return the specifications that were set. Throw KestrelException when there is none.
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;

  /// Runs the command line and sets the printed value as the root of `output`. A document without a
  /// value sets nothing.
  ///
  /// Errors become messages of `output`. If the output of the child process begins with lines that
  /// begin with "ERROR:", the rest of each of them becomes a message. There is a single message
  /// when nothing was printed, or when the printed value is invalid. When `SubstituteInput` refuses
  /// a value, there is a single message too, and nothing is run. Throws KestrelException when a
  /// marker does not fit the type of its parameter, and when the child process cannot be run.
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;

  /// Returns the template of the standard input (`forStdin`) or of the command line with the
  /// parameters of `input` inserted; a null `input` has no parameters.
  ///
  /// In a command line, values are escaped for the shell unless the form of the marker says
  /// otherwise, and lose their NUL bytes, which a command line cannot contain. Throws
  /// KestrelException when a marker does not fit the type of its parameter, and when values outside
  /// of quotes in a command line contain a "#" and, later, a newline: the "#" could begin a comment
  /// of the shell, and the newline could end it.
  std::string SubstituteInput(const std::shared_ptr<CallSpec::Input>& input, bool forStdin);

  /// Returns `value` with a backslash before every character for which `isBadChar` is true.
  static std::string SanitizeInput(const std::string& value);
  /// Returns `value` without the character `c`.
  static std::string SanitizeChar(const std::string& value, char c);
  /// Whether `SanitizeInput` escapes `c`: newline and ! " $ & ' ( ) * ; < > \ ^ ` |
  static bool isBadChar(char c);
  /// Returns the size of the block that begins with `open` at `position` of `text`, up to and
  /// including the `close` that balances it. Returns 0 when there is no `open` at `position` or the
  /// block is not closed within the first `length` bytes of `text`.
  static std::size_t FindPairedTokenSize(const char* text, std::size_t position, std::size_t length,
                                         char open, char close);

 private:
  std::shared_ptr<CallSpec::InputSpec> declaredInput_;
  std::shared_ptr<CallSpec::OutputSpec> declaredOutput_;
  std::string executeTemplate_;
  std::string stdinTemplate_;
};

}  // namespace Kestrel::AutoCli

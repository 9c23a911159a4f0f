// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/callspec/CallTarget.h"

namespace Kestrel::AutoCli {

/// A command that can be run. A concrete command derives from this class, brings a factory that
/// returns a `std::shared_ptr`, and supplies its input, its output and its work.
class KESTREL_API Command : public CommandSpec, public CallSpec::CallTarget {
 public:
  ~Command() override;

  /// Runs the command, or, when `input` holds the parameter "help", fills `output` with its help.
  ///
  /// What goes wrong reaches `output`, which must not be null, as error messages: an exception
  /// derived from `std::exception`, and a result that does not match the declared output. A
  /// result is not looked at once there is an error. Exceptions of other kinds pass through.
  /// `input` may be null; it is handed to the command as it is, and nothing in it is checked.
  void Execute(const std::shared_ptr<CallSpec::Input>& input,
               const std::shared_ptr<CallSpec::Output>& output) override;

  /// The command's work: sets the root object of `output`, or adds error messages to it. Called
  /// by `Execute` with its own arguments.
  virtual void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                               const std::shared_ptr<CallSpec::Output>& output) = 0;

 protected:
  Command();
};

}  // namespace Kestrel::AutoCli

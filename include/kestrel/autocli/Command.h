// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/callspec/CallTarget.h"

namespace Kestrel::AutoCli {

/// A command that can be run. A concrete command derives from this class, has a factory that
/// returns a `std::shared_ptr`, and implements `GetInputSpecInternal`, `GetOutputSpecInternal` and
/// `ExecuteInternal`.
class KESTREL_API Command : public CommandSpec, public CallSpec::CallTarget {
 public:
  ~Command() override;

  /// Runs the command; if `input` contains the parameter "help", fills `output` with the command's
  /// help instead.
  ///
  /// An exception derived from `std::exception` becomes an error message of `output`, which must
  /// not be null; other exceptions pass through. A result that does not match the declared output
  /// adds error messages too; it is checked only if there is no other error. `input` is not checked
  /// and may be null.
  void Execute(const std::shared_ptr<CallSpec::Input>& input,
               const std::shared_ptr<CallSpec::Output>& output) override;

  /// Does the command's work: sets the root object or adds error messages in `output`. Called by
  /// `Execute` with the same arguments.
  virtual void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                               const std::shared_ptr<CallSpec::Output>& output) = 0;

 protected:
  Command();
};

}  // namespace Kestrel::AutoCli

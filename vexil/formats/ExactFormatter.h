// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/autocli/Formatter.h"
#include "vexil/formats/ExactFormat.h"

namespace Kestrel::Formats {

/// The formatter of one of the tool's formats. Unlike the formatters of the library it prints a
/// result completely or not at all: if something is wrong with a parameter or a value, it adds
/// messages to the output and writes nothing.
class ExactFormatter : public AutoCli::Formatter {
 public:
  /// Makes a formatter without description and parameters. `format` must exist as long as the
  /// formatter. `declared` may be empty.
  explicit ExactFormatter(const ExactFormat& format, DeclaredResult declared = nullptr);
  ~ExactFormatter() override;

  /// Sets the description and the parameters unless they are already set. The constructor does not
  /// do this, because each start of the tool makes all formatters and uses at most one.
  void Describe();

  void Format(const std::shared_ptr<CallSpec::Output>& output, AutoCli::FormatParameters& params,
              AutoCli::DisplayContext& display, std::ostream& out) override;

 private:
  const ExactFormat& format_;
  DeclaredResult declared_;
};

}  // namespace Kestrel::Formats

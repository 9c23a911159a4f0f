// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "kestrel/autocli/Formatter.h"
#include "vexil/formats/ExactFormat.h"

namespace Kestrel::Formats {

/// What is known about the call whose result is printed. All may be empty.
struct CallFacts {
  DeclaredResult declared;

  /// Returns whether the user, rather than the command, has set the format parameter `key`.
  std::function<bool(const std::string& key)> isChosen;

  /// The stream that writes directly to standard output; null if there is none.
  const std::ostream* standardOutput = nullptr;
};

/// The formatter of one of the tool's formats. Unlike the formatters of the library it prints a
/// result completely or not at all: if something is wrong with a parameter or a value, it adds
/// messages to the output and writes nothing.
class ExactFormatter : public AutoCli::Formatter {
 public:
  /// Makes a formatter without description and parameters. `format` must exist as long as the
  /// formatter.
  explicit ExactFormatter(const ExactFormat& format, CallFacts facts = {});
  ~ExactFormatter() override;

  /// Sets the description and the parameters unless they are already set. The constructor does not
  /// do this, because each start of the tool makes all formatters and rarely uses more than one.
  void Describe();

  void Format(const std::shared_ptr<CallSpec::Output>& output, AutoCli::FormatParameters& params,
              AutoCli::DisplayContext& display, std::ostream& out) override;

 private:
  const ExactFormat& format_;
  CallFacts facts_;
};

}  // namespace Kestrel::Formats

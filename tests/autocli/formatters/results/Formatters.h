// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "autocli/formatters/results/ResultValues.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::Testing {

/// Returns the names of the formatters that print results of commands.
const std::vector<std::string>& ResultFormatterNames();

/// Makes the built-in formatter with that name.
std::shared_ptr<AutoCli::Formatter> MakeFormatter(const std::string& name);

/// The outcome of formatting a value.
struct Printed {
  std::string text;
  std::string thrown;  ///< the message of the KestrelException; empty if none was thrown
};

/// Formats a value for a screen of that width.
Printed PrintResult(AutoCli::Formatter& formatter, const ResultValue& value, unsigned width = 0);

}  // namespace Kestrel::Testing

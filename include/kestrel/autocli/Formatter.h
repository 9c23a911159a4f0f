// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/FormatterParam.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::AutoCli {

/// The base of all formatters: turns the result of a call into text.
///
/// A plug-in makes its formatters once and offers them by name. A formatter keeps nothing of a
/// call, so one object serves any number of calls.
class KESTREL_API Formatter {
 public:
  /// Sets the name under which the formatter is asked for. Description and parameters start
  /// empty; the constructor of the concrete class fills them.
  explicit Formatter(const std::string& name);

  virtual ~Formatter();

  /// Writes the root value of `output` to `out`. `params` is the command's choice with the user's
  /// laid over it. There is no status: a problem becomes text on the stream or an error message
  /// of `output`; a value of a shape that the formatter cannot print throws KestrelException.
  virtual void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
                      DisplayContext& display, std::ostream& out) = 0;

  /// The name; the reference lives as long as the formatter.
  const std::string& GetName() const;

  /// One sentence for people; empty when the concrete class gave none.
  const std::string& GetDescription() const;

  /// The documented parameters, in the order of the documentation.
  const std::vector<FormatterParam>& GetParams() const;

 protected:
  std::string description;
  std::vector<FormatterParam> params;

 private:
  std::string name;
};

}  // namespace Kestrel::AutoCli

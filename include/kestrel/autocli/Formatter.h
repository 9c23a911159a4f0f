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

/// The base class of all formatters, which turn the result of a call into output text.
///
/// A plug-in creates its formatters once and offers them by name. A formatter keeps no state
/// between calls, so one object serves any number of calls.
class KESTREL_API Formatter {
 public:
  /// Sets the name by which users choose the formatter. Description and parameters are empty until
  /// the constructor of the derived class sets them.
  explicit Formatter(const std::string& name);

  virtual ~Formatter();

  /// Writes the root value of `output` to `out`. `params` contains the defaults of the command,
  /// overridden by what the user chose. There is no status: problems become text on the stream or
  /// error messages of `output`. Throws KestrelException if the formatter cannot print such a
  /// value.
  virtual void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
                      DisplayContext& display, std::ostream& out) = 0;

  /// Returns the name. The reference is valid as long as the formatter exists.
  const std::string& GetName() const;

  /// Returns a short description for users, empty if the derived class has set none.
  const std::string& GetDescription() const;

  /// Returns the documented parameters, in the order in which they are listed for users.
  const std::vector<FormatterParam>& GetParams() const;

 protected:
  /// What `GetDescription` returns; a derived class sets it.
  std::string description;
  /// What `GetParams` returns; a derived class sets it.
  std::vector<FormatterParam> params;

 private:
  std::string name;
};

}  // namespace Kestrel::AutoCli

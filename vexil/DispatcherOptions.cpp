// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/DispatcherOptions.h"

#include <algorithm>

namespace Kestrel::Vexil {

const std::vector<DispatcherOption>& GetDispatcherOptions() {
  static const std::vector<DispatcherOption> kOptions = {
      {"format-param", "Set a parameter of the formatter: key=value.", true, true},
      {"formatter", "Print with this formatter.", true, false},
      {"h", "Show the dispatcher options.", false, false},
      {"help", "Show the dispatcher options.", false, false},
      {"input", "Read command lines from this file, or from STDIN.", true, false},
      {"plugin", "Load this plug-in.", true, true},
      {"plugin-dir", "Load all plug-ins in this folder.", true, true},
      {"screen-width", "Format for this number of columns.", true, false}};
  return kOptions;
}

const DispatcherOption* FindDispatcherOption(const std::string& name) {
  const std::vector<DispatcherOption>& options = GetDispatcherOptions();
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&name](const auto& option) { return option.name == name; });
  return found == options.end() ? nullptr : &*found;
}

}  // namespace Kestrel::Vexil

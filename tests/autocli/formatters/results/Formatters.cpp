// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/results/Formatters.h"

#include <cstdint>
#include <sstream>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/InternalPlugin.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::Testing {

const std::vector<std::string>& ResultFormatterNames() {
  static const std::vector<std::string> names = {"table", "simple", "xml", "python", "json"};
  return names;
}

std::shared_ptr<AutoCli::Formatter> MakeFormatter(const std::string& name) {
  const auto plugin = AutoCli::InternalPlugin::New();
  plugin->Initialize();
  return plugin->GetFormatter(name);
}

Printed PrintResult(AutoCli::Formatter& formatter, const ResultValue& value, unsigned width) {
  const auto output = CallSpec::Output::New();
  if (value.root != nullptr) {
    output->SetRootObject(value.root);
  }
  AutoCli::FormatParameters params = value.params;
  AutoCli::DisplayContext display;
  display.width = static_cast<std::uint16_t>(width);
  std::ostringstream out;
  Printed printed;
  try {
    formatter.Format(output, params, display, out);
  } catch (const KestrelException& error) {
    printed.thrown = error.what();
  }
  printed.text = out.str();
  return printed;
}

}  // namespace Kestrel::Testing

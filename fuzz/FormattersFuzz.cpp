// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: the name of a formatter; a width; format parameters and a value, see TypedValue.h.
//
// Every formatter prints every value or throws KestrelException. The output of json and xml can be
// read back as the same value.

#include <cstdint>
#include <memory>
#include <string>

#include "FuzzInput.h"
#include "Printed.h"
#include "Property.h"
#include "TypedValue.h"
#include "Usage.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/InternalPlugin.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::InternalPlugin;

// Wider screens only cost time.
constexpr int kMaxWidth = 9999;

std::shared_ptr<InternalPlugin> MakePlugin() {
  const std::shared_ptr<InternalPlugin> plugin = InternalPlugin::New();
  plugin->Initialize();
  return plugin;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  if (size > kMaxInputOfFormatter) {
    return 0;
  }
  static const std::shared_ptr<InternalPlugin> plugin = MakePlugin();
  FuzzInput input(data, size);
  const std::string name = input.TakeText();
  const int width = input.TakeNumber(0, kMaxWidth);
  const Kestrel::AutoCli::FormatParameters params = TakeParameters(input);
  const Value value = TakeValue(input);
  if (value == nullptr) {
    return 0;
  }
  for (const auto& formatter : plugin->GetFormatters()) {
    if (formatter->GetName() != name) {
      continue;
    }
    try {
      const Usage usage(size);
      const std::size_t outputSize = Print(*formatter, value, params, width).size();
      usage.Check(outputSize);
      Require(outputSize <= kMaxOutputOfFormatter, "the size of the output is bounded");
    } catch (const Kestrel::KestrelException&) {
      // Some formatters print values of certain shapes only.
    }
  }
  RequireJsonReadsBack(value);
  RequireXmlReadsBack(value);
  return 0;
}

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: indent, width, flags (the letters s, e and l) and the wrap character, each on a line of
// its own; then the text.
//
// The result equals that of a slow reference implementation that follows the rules word by word.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "FuzzInput.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/autocli/Util.h"
#include "support/SlowFitString.h"

namespace Kestrel::Fuzz {
namespace {

using Testing::FitArguments;

// Wider screens only cost time. Negative columns can result from a subtraction in a caller.
constexpr int kMinColumn = -10;
constexpr int kMaxColumn = 300;

FitArguments TakeArguments(FuzzInput& input) {
  FitArguments arguments;
  arguments.indent = input.TakeNumber(kMinColumn, kMaxColumn);
  arguments.width = input.TakeNumber(kMinColumn, kMaxColumn);
  const std::string_view flags = input.TakeLine();
  arguments.skipFirstIndent = flags.find('s') != std::string_view::npos;
  arguments.endLine = flags.find('e') != std::string_view::npos;
  arguments.splitLines = flags.find('l') != std::string_view::npos;
  const std::string_view wrapChar = input.TakeLine();
  arguments.wrapChar = wrapChar.empty() ? '\0' : wrapChar.front();
  arguments.text = input.TakeRest();
  return arguments;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  FuzzInput input(data, size);
  const FitArguments arguments = TakeArguments(input);

  const Usage usage(size);
  std::ostringstream out;
  Kestrel::AutoCli::AutoCli_FitString(arguments.indent, arguments.width, arguments.text,
                                      arguments.skipFirstIndent, out, arguments.endLine,
                                      arguments.wrapChar, arguments.splitLines);
  usage.Check(out.str().size());
  RequireEqual(out.str(), Kestrel::Testing::FitSlowly(arguments),
               "the text is wrapped as the reference implementation wraps it");
  return 0;
}

// Input: indent, width, flags (letters s, e and l), the character at a break, each a line; then the
// text.
//
// The result is that of a slow fitter that follows the rules word by word.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzInput.h"
#include "Property.h"
#include "kestrel/autocli/Util.h"

namespace Kestrel::Fuzz {
namespace {

struct Rules {
  int indent = 0;
  int width = 0;
  bool skipFirstIndent = false;
  bool endLine = false;
  bool splitLines = false;
  char wrapChar = 0;
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> pieces(1);
  for (const char c : text) {
    if (c == separator) {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  if (pieces.back().empty()) {
    pieces.pop_back();
  }
  return pieces;
}

std::string Margin(const Rules& rules) {
  return std::string(static_cast<std::size_t>(rules.indent < 1 ? 1 : rules.indent), ' ');
}

std::string BrokenSlowly(const std::string& text, const Rules& rules) {
  const int available = rules.width - rules.indent;
  int remaining = available;
  bool isFirst = true;
  std::string fitted;
  for (const std::string& word : Split(text, ' ')) {
    const int cost = static_cast<int>(word.size()) + 1;
    remaining -= cost;
    if (remaining < 0) {
      fitted += rules.wrapChar == 0 ? ' ' : rules.wrapChar;
      fitted += "\n" + Margin(rules);
      remaining = available - cost;
    } else if (!isFirst) {
      fitted += ' ';
    }
    fitted += word;
    isFirst = false;
  }
  return fitted;
}

std::string FitSlowly(const std::string& text, const Rules& rules) {
  if (rules.splitLines) {
    std::string fitted;
    Rules ofLine = rules;
    ofLine.splitLines = false;
    bool isFirst = true;
    for (const std::string& line : Split(text, '\n')) {
      fitted += !rules.endLine && !isFirst ? "\n" : "";
      fitted += FitSlowly(line, ofLine);
      ofLine.skipFirstIndent = false;
      isFirst = false;
    }
    return fitted;
  }
  const bool isWhole = rules.width <= rules.indent ||
                       text.size() <= static_cast<std::size_t>(rules.width - rules.indent);
  return (rules.skipFirstIndent ? "" : Margin(rules)) +
         (isWhole ? text : BrokenSlowly(text, rules)) + (rules.endLine ? "\n" : "");
}

// Columns beyond those of the widest screen teach nothing new and cost time; negative ones are
// what a caller's subtraction may give.
constexpr int kLeastColumn = -10;
constexpr int kLastColumn = 300;

Rules TakeRules(FuzzInput& input) {
  Rules rules;
  rules.indent = input.TakeNumber(kLeastColumn, kLastColumn);
  rules.width = input.TakeNumber(kLeastColumn, kLastColumn);
  const std::string_view flags = input.TakeLine();
  rules.skipFirstIndent = flags.find('s') != std::string_view::npos;
  rules.endLine = flags.find('e') != std::string_view::npos;
  rules.splitLines = flags.find('l') != std::string_view::npos;
  const std::string_view wrapChar = input.TakeLine();
  rules.wrapChar = wrapChar.empty() ? '\0' : wrapChar.front();
  return rules;
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  FuzzInput input(data, size);
  const Rules rules = TakeRules(input);
  const std::string text = input.TakeRest();

  std::ostringstream out;
  Kestrel::AutoCli::AutoCli_FitString(rules.indent, rules.width, text, rules.skipFirstIndent, out,
                                      rules.endLine, rules.wrapChar, rules.splitLines);
  RequireEqual(out.str(), FitSlowly(text, rules), "a text is fitted word by word");
  return 0;
}

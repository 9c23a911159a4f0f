// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "callspec/expression/BoostExpression.h"

#include <boost/regex.hpp>
#include <locale>
#include <stdexcept>

namespace Kestrel::CallSpec {
namespace {

class BoostExpression final : public Expression {
 public:
  explicit BoostExpression(const std::string& text) {
    // The characters of a class such as [[:alpha:]] must not depend on the program's locale.
    regex_.imbue(std::locale::classic());
    regex_.assign(text);
  }

  bool MatchesWhole(const std::string& value) const override {
    try {
      return boost::regex_match(value, regex_);
    } catch (const std::runtime_error&) {
      // Boost.Regex gave up: matching takes too many steps or too much memory.
      return false;
    }
  }

 private:
  boost::regex regex_;
};

}  // namespace
}  // namespace Kestrel::CallSpec

const Kestrel::CallSpec::Expression* Kestrel_CompileExpression(const std::string& text) {
  return new Kestrel::CallSpec::BoostExpression(text);
}

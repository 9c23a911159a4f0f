// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/formatters/ValueView.h"
#include "autocli/text/Decimal.h"

namespace Kestrel::AutoCli {

/// Converts values to what their `ToString()` returns, without allocating memory for a scalar.
class PlainText {
 public:
  /// Returns the text of `value`. It is valid until the next call, as long as `value` and this
  /// object exist.
  std::string_view Of(const MetaObj::MetaObject& value) {
    if (!MetaObj::ValueAccess::IsScalarClass(value)) {
      text_ = value.ToString();
      return text_;
    }
    switch (value.GetType()) {
      case MetaObj::MetaType::Int:
        return PrintNumber(static_cast<const MetaObj::MetaInt&>(value).GetValue());
      case MetaObj::MetaType::Bool:
        return static_cast<const MetaObj::MetaBool&>(value).GetValue() ? "true" : "false";
      default:
        return static_cast<const MetaObj::MetaString&>(value).GetValue();
    }
  }

  /// Returns the length of that text.
  std::size_t Measure(const MetaObj::MetaObject& value) {
    const auto* number = ViewAs<MetaObj::MetaInt>(&value);
    return number == nullptr ? Of(value).size() : Decimal{number->GetValue()}.Length();
  }

 private:
  std::string_view PrintNumber(long number) {
    const char* const end = Decimal{number}.WriteTo(digits_);
    return {digits_, static_cast<std::size_t>(end - digits_)};
  }

  char digits_[Decimal::kMaxLength];
  std::string text_;
};

}  // namespace Kestrel::AutoCli

#pragma once

#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/ValueView.h"

namespace Kestrel::AutoCli {

/// What a value's `ToString()` gives, made without a string where the value is a scalar.
class PlainText {
 public:
  /// The text of `value`; it lives as long as the value and this object, until the next call.
  std::string_view Of(const MetaObj::MetaObject& value) {
    if (const auto* text = ViewAs<MetaObj::MetaString>(&value)) {
      return text->GetValue();
    }
    if (const auto* number = ViewAs<MetaObj::MetaInt>(&value)) {
      const char* const end =
          std::to_chars(digits_, digits_ + sizeof digits_, number->GetValue()).ptr;
      return {digits_, static_cast<std::size_t>(end - digits_)};
    }
    if (const auto* boolean = ViewAs<MetaObj::MetaBool>(&value)) {
      return boolean->GetValue() ? "true" : "false";
    }
    text_ = value.ToString();
    return text_;
  }

 private:
  char digits_[20];
  std::string text_;
};

}  // namespace Kestrel::AutoCli

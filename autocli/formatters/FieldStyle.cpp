// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/FieldStyle.h"

#include <string_view>

#include "autocli/text/StartsWith.h"
#include "autocli/text/SystemError.h"
#include "kestrel/autocli/Util.h"

namespace Kestrel::AutoCli {

namespace {

constexpr std::string_view kPrintfPrefix = "printf:";
constexpr std::string_view kUnitsPrefix = "units:";

bool HasKeyWithPrefix(const FormatParameters& params, std::string_view prefix) {
  const auto& parameters = params.GetParameters();
  const auto found = parameters.lower_bound(std::string(prefix));
  return found != parameters.end() && StartsWith(found->first, prefix);
}

const std::string* FindParameter(const FormatParameters& params, const std::string& key) {
  const auto& parameters = params.GetParameters();
  const auto found = parameters.find(key);
  return found == parameters.end() ? nullptr : &found->second;
}

}  // namespace

bool FieldStyle::IsUsedBy(const FormatParameters& params) {
  return HasKeyWithPrefix(params, kPrintfPrefix) || HasKeyWithPrefix(params, kUnitsPrefix);
}

FieldStyle::FieldStyle(const std::string& typeName, const std::string& fieldName,
                       const FormatParameters& params) {
  const std::string qualifier = typeName + "." + fieldName;
  printfKey_ = std::string(kPrintfPrefix) + qualifier;
  if (const std::string* format = FindParameter(params, printfKey_)) {
    format_.emplace(*format);
  }
  units_ = FindParameter(params, std::string(kUnitsPrefix) + qualifier);
}

std::string FieldStyle::MakeText(const MetaObj::MetaObject* value) const {
  if (value == nullptr) {
    return "NULL Object";
  }
  std::string text;
  if (!format_.has_value()) {
    text = value->ToString();
  } else if (const int error = format_->Print(*value, text); error != 0) {
    return "Error while handling formatting parameter " + printfKey_ +
           ".  Unable to format field: " + SystemErrorText(error);
  }
  if (units_ != nullptr) {
    text += ' ';
    text += *units_;
  }
  return text;
}

std::string AutoCli_FormatField(const std::string& typeName, const std::string& fieldName,
                                std::shared_ptr<MetaObj::MetaObject> value,
                                FormatParameters& params) {
  const bool isStyled = value != nullptr && FieldStyle::IsUsedBy(params);
  const FieldStyle style = isStyled ? FieldStyle(typeName, fieldName, params) : FieldStyle();
  return style.MakeText(value.get());
}

}  // namespace Kestrel::AutoCli

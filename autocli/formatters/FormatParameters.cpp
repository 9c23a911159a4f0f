// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/FormatParameters.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "autocli/text/TextPieces.h"
#include "callspec/TextValue.h"

namespace Kestrel::AutoCli {

using CallSpec::TextOrEmpty;

FormatParameters::FormatParameters() = default;

void FormatParameters::SetFormatter(std::string name) { formatter_ = std::move(name); }

void FormatParameters::SetFormatter(const char* name) { formatter_ = TextOrEmpty(name); }

const std::string& FormatParameters::GetFormatter() const { return formatter_; }

const std::map<std::string, std::string>& FormatParameters::GetParameters() const {
  return parameters_;
}

bool FormatParameters::HasParameter(const std::string& key) const {
  return parameters_.find(key) != parameters_.end();
}

const std::string& FormatParameters::GetParameter(const std::string& key) const {
  static const std::string absent;
  const auto found = parameters_.find(key);
  return found == parameters_.end() ? absent : found->second;
}

void FormatParameters::SetParameter(std::string key, std::string value) {
  parameters_.insert_or_assign(std::move(key), std::move(value));
}

void FormatParameters::SetParameter(const char* key, const char* value) {
  SetParameter(TextOrEmpty(key), TextOrEmpty(value));
}

void FormatParameters::OverrideValues(const FormatParameters& other) {
  if (!other.formatter_.empty()) {
    formatter_ = other.formatter_;
  }
  for (const auto& [key, value] : other.parameters_) {
    parameters_.insert_or_assign(key, value);
  }
}

std::vector<std::string> FormatParameters::GetParameterAsList(const std::string& key) const {
  const std::string& value = GetParameter(key);
  std::vector<std::string> list;
  list.reserve(1 + static_cast<std::size_t>(std::count(value.begin(), value.end(), ',')));
  TextPieces pieces(value, ',');
  for (std::string_view piece; pieces.Next(piece);) {
    list.emplace_back(piece);
  }
  return list;
}

}  // namespace Kestrel::AutoCli

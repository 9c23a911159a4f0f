// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/FormatKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "autocli/text/TextPieces.h"

namespace Kestrel::Vexil {

namespace {

using Names = std::vector<std::string>;

// The keys of a formatter. <T> stands for each type, <T>.<F> for each of its fields.
struct FormatterKeys {
  std::string_view formatter;
  std::array<std::string_view, 9> keys;
};

constexpr std::array<FormatterKeys, 6> kFormatterKeys = {{
    {"table",
     {"fields", "fields:<T>", "header-line", "show-header", "wrap-last", "printf:<T>.<F>",
      "units:<T>.<F>", "table-columns", "table-header"}},
    {"simple",
     {"fields", "fields:<T>", "align-fields", "header:<T>", "printf:<T>.<F>", "units:<T>.<F>"}},
    {"xml", {"stylesheet"}},
    {"json", {}},
    {"python", {}},
    {"commandhelp", {}},
}};

bool TakeSuffix(std::string_view& text, std::string_view suffix) {
  const bool hasSuffix =
      text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
  text.remove_suffix(hasSuffix ? suffix.size() : 0);
  return hasSuffix;
}

void AddKeysOfType(std::string_view prefix, bool isOfField, const ResultType& type, Names& keys) {
  const std::string key = std::string(prefix) + type.name;
  if (!isOfField) {
    keys.push_back(key);
    return;
  }
  for (const std::string& field : type.fields) {
    keys.push_back(key + "." + field);
  }
}

void AddKeys(std::string_view key, const std::vector<ResultType>& types, Names& keys) {
  const bool isOfField = TakeSuffix(key, ".<F>");
  if (!TakeSuffix(key, "<T>")) {
    keys.emplace_back(key);
    return;
  }
  for (const ResultType& type : types) {
    AddKeysOfType(key, isOfField, type, keys);
  }
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kSpaces = " \t\n\v\f\r";
  const std::size_t begin = text.find_first_not_of(kSpaces);
  return begin == std::string_view::npos
             ? std::string_view()
             : text.substr(begin, text.find_last_not_of(kSpaces) - begin + 1);
}

}  // namespace

std::optional<Names> ListFormatKeys(const std::string& formatter,
                                    const std::vector<ResultType>& types) {
  const auto* const found =
      std::find_if(kFormatterKeys.begin(), kFormatterKeys.end(),
                   [&formatter](const auto& keys) { return keys.formatter == formatter; });
  if (found == kFormatterKeys.end()) {
    return std::nullopt;
  }
  Names keys;
  for (const std::string_view key : found->keys) {
    if (!key.empty()) {
      AddKeys(key, types, keys);
    }
  }
  return keys;
}

bool IsToolFormatter(const std::string& formatter) {
  constexpr std::array<std::string_view, 7> kNames = {"csv", "json-utf8", "ndjson", "pretty",
                                                      "tsv", "value-xml", "yaml"};
  return std::find(kNames.begin(), kNames.end(), formatter) != kNames.end();
}

Names ListChoosableFields(const std::string& key, const std::vector<ResultType>& types) {
  const bool isOfAll = key == "fields" || key == "table-columns";
  Names fields;
  for (const ResultType& type : types) {
    if (isOfAll || key == "fields:" + type.name) {
      fields.insert(fields.end(), type.fields.begin(), type.fields.end());
    }
  }
  return fields;
}

Names SplitFieldNames(const std::string& value) {
  Names names;
  AutoCli::TextPieces pieces(value, ',');
  for (std::string_view piece; pieces.Next(piece);) {
    names.emplace_back(Trim(piece));
  }
  return names;
}

}  // namespace Kestrel::Vexil

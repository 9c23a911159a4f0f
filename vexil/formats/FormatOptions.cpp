// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatOptions.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

namespace {

using AutoCli::FormatParameters;

// The keys that the formatters table, simple and xml know, except "fields".
constexpr std::string_view kForeignKeys[] = {"align-fields", "header-line",   "show-header",
                                             "stylesheet",   "table-columns", "table-header",
                                             "wrap-last"};
constexpr std::string_view kForeignPrefixes[] = {"fields:", "header:", "printf:", "units:"};

bool IsForeign(std::string_view key) {
  const auto starts = [key](std::string_view prefix) {
    return key.substr(0, prefix.size()) == prefix;
  };
  return std::find(std::begin(kForeignKeys), std::end(kForeignKeys), key) !=
             std::end(kForeignKeys) ||
         std::any_of(std::begin(kForeignPrefixes), std::end(kForeignPrefixes), starts);
}

bool IsCommon(std::string_view key) {
  return std::any_of(kCommonKeys.begin(), kCommonKeys.end(),
                     [key](const FormatKey& common) { return common.name == key; });
}

bool IsOwn(std::string_view key, const OwnKeys& ownKeys) {
  return std::any_of(ownKeys.begin(), ownKeys.end(),
                     [key](const FormatKey* own) { return own != nullptr && own->name == key; });
}

void CheckKeys(const FormatParameters& params, const OwnKeys& ownKeys,
               std::vector<std::string>& errors) {
  for (const auto& [key, value] : params.GetParameters()) {
    if (!IsOwn(key, ownKeys) && !IsCommon(key) && !IsForeign(key)) {
      errors.push_back("Unknown format parameter: " + ShownText(key));
    }
  }
}

void ReadFields(const FormatParameters& params, FormatOptions& options) {
  options.hasFields = params.HasParameter("fields");
  options.fields = params.GetParameterAsList("fields");
  if (options.fields.empty()) {
    options.fields.emplace_back();  // a field may have the empty name
  }
}

void ReadSort(const FormatParameters& params, FormatOptions& options) {
  options.isSorted = params.HasParameter("sort");
  options.sortField = params.GetParameter("sort");
  options.isDescending = !options.sortField.empty() && options.sortField[0] == '-';
  options.sortField.erase(0, options.isDescending ? 1 : 0);
}

void ReadLimit(const FormatParameters& params, FormatOptions& options,
               std::vector<std::string>& errors) {
  if (!params.HasParameter("limit")) {
    return;
  }
  const std::string& text = params.GetParameter("limit");
  const char* const end = text.data() + text.size();
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
    errors.push_back("The value of limit is not a whole number: " + ShownText(text));
  } else if (std::from_chars(text.data(), end, options.limit).ec != std::errc()) {
    options.limit = std::numeric_limits<std::size_t>::max();  // no list is longer
  }
}

/// Reads the parameter `key`, whose value must be one of two words, and sets `isFirst` to whether
/// it is the first word. Returns false if there is no such parameter. If it has another value,
/// appends a message and returns false too.
bool ReadChoice(const FormatParameters& params, const FormatKey& key, const char* first,
                const char* second, bool& isFirst, std::vector<std::string>& errors) {
  const std::string name(key.name);
  if (!params.HasParameter(name)) {
    return false;
  }
  const std::string& text = params.GetParameter(name);
  isFirst = text == first;
  if (isFirst || text == second) {
    return true;
  }
  errors.push_back("The value of " + name + " is neither " + first + " nor " + second + ": " +
                   ShownText(text));
  return false;
}

void ReadColor(const FormatParameters& params, FormatOptions& options,
               std::vector<std::string>& errors) {
  bool isAlways = false;
  if (ReadChoice(params, kColorKey, "always", "never", isAlways, errors)) {
    options.color = isAlways ? ColorChoice::Always : ColorChoice::Never;
  }
}

}  // namespace

FormatOptions ReadFormatOptions(const FormatParameters& params, const OwnKeys& ownKeys,
                                std::vector<std::string>& errors) {
  CheckKeys(params, ownKeys, errors);
  FormatOptions options;
  ReadFields(params, options);
  ReadSort(params, options);
  ReadLimit(params, options, errors);
  if (IsOwn(kHeaderKey.name, ownKeys)) {
    ReadChoice(params, kHeaderKey, "true", "false", options.hasHeader, errors);
  }
  if (IsOwn(kColorKey.name, ownKeys)) {
    ReadColor(params, options, errors);
    ReadChoice(params, kHumanKey, "true", "false", options.isHuman, errors);
  }
  return options;
}

}  // namespace Kestrel::Formats

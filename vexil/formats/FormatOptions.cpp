// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatOptions.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <system_error>

#include "autocli/text/TextPieces.h"
#include "vexil/formats/Faults.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

namespace {

// The map is read directly: with immediate binding, the dynamic linker would look up the operations
// of FormatParameters at each start.
using Parameters = std::map<std::string, std::string>;

// The keys that the formatters table, simple and xml know, except "fields".
constexpr char kForeignKeys[][14] = {"align-fields",  "header-line",  "show-header", "stylesheet",
                                     "table-columns", "table-header", "wrap-last"};
constexpr char kForeignPrefixes[][8] = {"fields:", "header:", "printf:", "units:"};

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

/// Returns the value of the parameter `key`; null if there is none.
const std::string* Find(const Parameters& params, std::string_view key) {
  const auto found = params.find(std::string(key));
  return found == params.end() ? nullptr : &found->second;
}

void CheckKeys(const Parameters& params, const OwnKeys& ownKeys, std::vector<std::string>& errors) {
  for (const auto& [key, value] : params) {
    if (!IsOwn(key, ownKeys) && !IsCommon(key) && !IsForeign(key)) {
      errors.push_back(Concat({"Unknown format parameter: ", ShownText(key)}));
    }
  }
}

void ReadFields(const Parameters& params, FormatOptions& options) {
  const std::string* const names = Find(params, "fields");
  if (names == nullptr) {
    return;
  }
  options.hasFields = true;
  AutoCli::TextPieces pieces(*names, ',');
  for (std::string_view piece; pieces.Next(piece);) {
    options.fields.emplace_back(piece);
  }
  if (options.fields.empty()) {
    options.fields.emplace_back();  // a field may have the empty name
  }
}

void ReadSort(const Parameters& params, FormatOptions& options) {
  const std::string* const field = Find(params, "sort");
  if (field == nullptr) {
    return;
  }
  options.isSorted = true;
  options.isDescending = !field->empty() && field->front() == '-';
  options.sortField = field->substr(options.isDescending ? 1 : 0);
}

void ReadLimit(const Parameters& params, FormatOptions& options, std::vector<std::string>& errors) {
  const std::string* const text = Find(params, "limit");
  if (text == nullptr) {
    return;
  }
  const char* const end = text->data() + text->size();
  if (text->empty() || text->find_first_not_of("0123456789") != std::string::npos) {
    errors.push_back(Concat({"The value of limit is not a whole number: ", ShownText(*text)}));
  } else if (std::from_chars(text->data(), end, options.limit).ec != std::errc()) {
    options.limit = std::numeric_limits<std::size_t>::max();  // no list is longer
  }
}

/// Reads the parameter `key`, whose value must be one of two words, and sets `isFirst` to whether
/// it is the first word. Returns false if there is no such parameter. If it has another value,
/// appends a message and returns false too.
bool ReadChoice(const Parameters& params, const FormatKey& key, std::string_view first,
                std::string_view second, bool& isFirst, std::vector<std::string>& errors) {
  const std::string* const text = Find(params, key.name);
  if (text == nullptr) {
    return false;
  }
  isFirst = *text == first;
  if (isFirst || *text == second) {
    return true;
  }
  errors.push_back(Concat(
      {"The value of ", key.name, " is neither ", first, " nor ", second, ": ", ShownText(*text)}));
  return false;
}

void ReadColor(const Parameters& params, FormatOptions& options, std::vector<std::string>& errors) {
  bool isAlways = false;
  if (ReadChoice(params, kColorKey, "always", "never", isAlways, errors)) {
    options.color = isAlways ? ColorChoice::Always : ColorChoice::Never;
  }
}

}  // namespace

FormatOptions ReadFormatOptions(const AutoCli::FormatParameters& parameters, const OwnKeys& ownKeys,
                                std::vector<std::string>& errors) {
  const Parameters& params = parameters.GetParameters();
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

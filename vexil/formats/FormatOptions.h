// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/autocli/FormatParameters.h"

namespace Kestrel::Formats {

/// A format parameter and its description for users.
struct FormatKey {
  std::string_view name;
  const char* description;
};

/// The parameters that every format of the tool has.
inline constexpr std::array<FormatKey, 3> kCommonKeys = {
    {{"fields", "The fields to print, separated by commas, in this order: A,B.C"},
     {"sort", "The field to sort a list by. With '-' before it, the greatest value comes first"},
     {"limit", "The greatest number of elements of a list to print"}}};

/// The parameter of the formats csv and tsv.
inline constexpr FormatKey kHeaderKey = {"header",
                                         "Omits the line with the names of the fields if 'false'"};

/// The parameters of the format for people.
inline constexpr FormatKey kColorKey = {
    "color", "'always' prints colours also into a pipe, 'never' prints none on a terminal"};
inline constexpr FormatKey kHumanKey = {"human",
                                        "Prints sizes with units, such as 1.5 KiB, if 'true'"};

/// The parameters that one format has beyond the common ones. Unused elements are null.
using OwnKeys = std::array<const FormatKey*, 2>;

/// Whether escape sequences are printed.
enum class ColorChoice { Auto, Always, Never };

/// Where a result is printed.
struct Screen {
  std::size_t width = 0;          ///< in columns; 0 if there is no limit
  bool isStandardOutput = false;  ///< whether the output goes directly to standard output
};

/// What the format parameters of a call choose.
struct FormatOptions {
  bool hasFields = false;           ///< false means all fields
  std::vector<std::string> fields;  ///< the fields to print, in this order
  bool isSorted = false;            ///< false means that the rows keep their order
  std::string sortField;
  bool isDescending = false;
  std::size_t limit = std::numeric_limits<std::size_t>::max();  ///< the maximum number of rows
  bool hasHeader = true;
  ColorChoice color = ColorChoice::Auto;
  bool isHuman = false;
  Screen screen;  ///< not from the parameters
};

/// Reads the parameters for a format that has `ownKeys` and the common keys.
///
/// Keys that only the formatters of the library know are ignored, because commands set them as
/// defaults. A message is appended to `errors` for each unknown key and each wrong value.
FormatOptions ReadFormatOptions(const AutoCli::FormatParameters& params, const OwnKeys& ownKeys,
                                std::vector<std::string>& errors);

}  // namespace Kestrel::Formats

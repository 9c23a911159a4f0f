// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gmock/gmock.h>

#include <string>

#include "kestrel/autocli/FormatterParam.h"

namespace Kestrel::AutoCli {

/// Matches a FormatterParam with these members.
inline ::testing::Matcher<FormatterParam> Documents(const std::string& name,
                                                    const std::string& description,
                                                    bool flag = false) {
  return ::testing::AllOf(
      ::testing::Field("name", &FormatterParam::name, name),
      ::testing::Field("description", &FormatterParam::description, description),
      ::testing::Field("flag", &FormatterParam::flag, flag));
}

/// Returns the end of the descriptions of "units:" and "printf:". It is the same in all formatters
/// except for the character between type and field.
inline std::string UnitsExample(char separator) {
  return std::string("For example specifying \"units:ScsiDeviceList") + separator +
         "Size\" = \"Mb\" would append the string 'Mb' to the end of a field";
}

}  // namespace Kestrel::AutoCli

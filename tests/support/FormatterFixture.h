// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>

#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleValues.h"

namespace Kestrel::Testing {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

using Parameters = std::initializer_list<std::pair<const char*, const char*>>;

/// The base of the formatters' suites: prints values with one formatter.
template <typename Formatter>
class FormatterFixture : public ::testing::Test {
 protected:
  /// Returns what the formatter writes for a root value.
  static std::string Print(const std::shared_ptr<MetaObject>& root, Parameters parameters = {},
                           int width = 0) {
    Formatter formatter;
    return FormatToText(formatter, root, parameters, width);
  }

  /// Returns what the formatter writes for a value at a nesting level, if it supports that.
  static std::string PrintAt(int level, const std::shared_ptr<MetaObject>& value) {
    Formatter formatter;
    std::ostringstream out;
    formatter.Format(value, out, level);
    return out.str();
  }

  /// Writes the output of a call to `out`.
  static void Format(const std::shared_ptr<CallSpec::Output>& output, std::ostream& out,
                     Parameters parameters = {}) {
    Formatter formatter;
    AutoCli::FormatParameters params = MakeParameters(parameters);
    AutoCli::DisplayContext display;
    formatter.Format(output, params, display, out);
  }
};

}  // namespace Kestrel::Testing

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
#include "support/LimitedBuffer.h"
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

  /// Returns what the formatter writes for a value at a nesting level. Not all formatters have the
  /// overload of Format that this function calls.
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

  /// Prints a list of `count` structures to a stream that fails after 1000 bytes. Returns how often
  /// values were asked for their text.
  static int PrintToAFullDisk(int count) {
    int asked = 0;
    const auto row = MetaStruct::New("Row");
    row->SetField("a", std::make_shared<ActingValue>([&asked] {
                    ++asked;
                    return std::string(100, 'x');
                  }));
    const auto list = MakeList({row});
    for (int i = 1; i < count; ++i) {
      list->Add(row);
    }
    LimitedBuffer buffer(1000);
    std::ostream out(&buffer);
    Format(MakeOutput(list), out);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(buffer.GetText().size(), 1000u);
    return asked;
  }

  /// Prints a short output to a stream that throws after 10 bytes. Returns whether the exception
  /// reached the caller.
  static bool ThrowsOnAFullDisk() {
    LimitedBuffer buffer(10);
    std::ostream out(&buffer);
    out.exceptions(std::ios_base::badbit);
    try {
      Format(MakeOutput(MakeDisks({{"a", 1}})), out);
    } catch (const std::ios_base::failure&) {
      return true;
    }
    return false;
  }

  /// Returns a list of the disks "a" and "c" with a structure of type "Floppy" between them.
  static std::shared_ptr<MetaList> MakeDisksAndAFloppy() {
    const auto list = MakeDisks({{"a", 1}});
    const auto floppy = MetaStruct::New("Floppy");
    floppy->SetField("Name", "b");
    floppy->SetField("Size", 2);
    list->Add(floppy);
    list->Add(MakeDisk("c", 3));
    return list;
  }
};

}  // namespace Kestrel::Testing

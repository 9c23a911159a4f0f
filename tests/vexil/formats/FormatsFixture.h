// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleValues.h"
#include "vexil/formats/ExactFormatter.h"

namespace Kestrel::Formats {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MakeDisk;
using Testing::MakeDisks;
using Testing::MakeList;
using Testing::MakeRecord;

using Parameters = std::initializer_list<std::pair<const char*, const char*>>;

/// The output of a formatter for a result, and the messages that it adds.
struct Printed {
  std::string text;
  std::vector<std::string> errors;
};

inline Printed PrintWithErrors(const ExactFormat& format, const std::shared_ptr<MetaObject>& root,
                               Parameters parameters = {}, std::uint16_t width = 0) {
  const auto output = Testing::MakeOutput(root);
  AutoCli::FormatParameters params = Testing::MakeParameters(parameters);
  AutoCli::DisplayContext display;
  display.width = width;
  std::ostringstream out;
  ExactFormatter(format).Format(output, params, display, out);
  return {out.str(), output->GetErrors()};
}

/// Returns what a formatter writes for a result that can be printed.
inline std::string Print(const ExactFormat& format, const std::shared_ptr<MetaObject>& root,
                         Parameters parameters = {}, std::uint16_t width = 0) {
  const Printed printed = PrintWithErrors(format, root, parameters, width);
  EXPECT_THAT(printed.errors, IsEmpty());
  return printed.text;
}

/// Returns the messages for a result that cannot be printed. Fails the test if anything is written.
inline std::vector<std::string> ErrorsOf(const ExactFormat& format,
                                         const std::shared_ptr<MetaObject>& root,
                                         Parameters parameters = {}) {
  const Printed printed = PrintWithErrors(format, root, parameters);
  EXPECT_EQ(printed.text, "");
  return printed.errors;
}

/// Makes a structure of type "Row" with one string field.
inline std::shared_ptr<MetaStruct> MakeRow(const std::string& name, const std::string& value) {
  auto row = MetaStruct::New("Row");
  row->SetField(name, value);
  return row;
}

/// Makes a structure with a disk in the field "Disk", a list of strings and a boolean.
inline std::shared_ptr<MetaStruct> MakeVolume() {
  auto volume = MetaStruct::New("Volume");
  volume->SetField("Disk", MakeDisk("sda", 7));
  volume->SetField("Labels", std::vector<std::string>{"a", "b"});
  volume->SetField("On", true);
  return volume;
}

/// Makes a list of strings.
inline std::shared_ptr<MetaList> MakeTexts(const std::vector<std::string>& texts) {
  auto list = MetaList::New(MetaType::String);
  list->AddAll(texts);
  return list;
}

}  // namespace Kestrel::Formats

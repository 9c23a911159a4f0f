// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/support/HostCall.h"

#include <gtest/gtest.h>

#include <sstream>

#include "kestrel/metaobj/MetaInt.h"
#include "plugins/host/support/HostTool.h"

namespace Kestrel::Testing {

using MetaObj::MetaInt;
using MetaObj::MetaStruct;

const TestTool& GetTool() {
  // The tool is never destroyed, because the plug-in's static objects are destroyed before those of
  // this program.
  static const TestTool& tool = *new TestTool(KESTREL_HOST_PLUGIN);
  return tool;
}

AutoCli::Dispatcher& GetDispatcher() { return GetTool().GetDispatcher(); }

std::string Print(const std::string& path, const Parameters& parameters, unsigned short width) {
  const CommandResult result = Call(path, parameters);
  EXPECT_TRUE(result.GetErrors().empty()) << ::testing::PrintToString(result.GetErrors());
  auto format = GetDispatcher().GetDefaultOutputFormatParameters(result.input, result.output);
  AutoCli::DisplayContext display;
  display.width = width;
  std::ostringstream out;
  GetDispatcher().FormatOutput(result.output, format, display, out);
  return out.str();
}

std::string TextOf(const std::shared_ptr<MetaStruct>& structure, const std::string& field) {
  const auto value = structure == nullptr ? nullptr : structure->GetField(field);
  if (value == nullptr) {
    ADD_FAILURE() << "There is no field " << field;
    return {};
  }
  return value->ToString();
}

std::vector<std::string> FieldOf(const std::vector<std::shared_ptr<MetaStruct>>& structures,
                                 const std::string& field) {
  std::vector<std::string> texts;
  for (const auto& structure : structures) {
    texts.push_back(TextOf(structure, field));
  }
  return texts;
}

long NumberOf(const std::shared_ptr<MetaStruct>& structure, const std::string& field) {
  const auto number = structure == nullptr
                          ? nullptr
                          : std::dynamic_pointer_cast<MetaInt>(structure->GetField(field));
  if (number == nullptr) {
    ADD_FAILURE() << "There is no number " << field;
    return 0;
  }
  return number->GetValue();
}

}  // namespace Kestrel::Testing

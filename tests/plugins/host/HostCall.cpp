// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/HostCall.h"

#include <gtest/gtest.h>

#include <list>
#include <sstream>

#include "kestrel/metaobj/MetaInt.h"

namespace Kestrel::Testing {
namespace {

using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaStruct;

std::list<std::string> WordsOf(const std::string& path) {
  std::istringstream in(path);
  std::list<std::string> words;
  for (std::string word; in >> word;) {
    words.push_back(word);
  }
  return words;
}

}  // namespace

std::shared_ptr<MetaStruct> HostResult::GetRecord() const {
  return std::dynamic_pointer_cast<MetaStruct>(output->GetRootObject());
}

std::shared_ptr<MetaList> HostResult::GetList() const {
  return std::dynamic_pointer_cast<MetaList>(output->GetRootObject());
}

std::vector<std::shared_ptr<MetaStruct>> HostResult::GetRecords() const {
  std::vector<std::shared_ptr<MetaStruct>> records;
  const auto list = GetList();
  if (list == nullptr) {
    ADD_FAILURE() << "The result is no list: " << ::testing::PrintToString(GetErrors());
    return records;
  }
  for (const auto& object : list->GetObjects()) {
    records.push_back(std::dynamic_pointer_cast<MetaStruct>(object));
  }
  return records;
}

AutoCli::Dispatcher& GetHostDispatcher() {
  // Never destroyed: a plug-in's own static objects go before one of ours would.
  static AutoCli::Dispatcher& dispatcher = [] {
    auto* const made = new AutoCli::Dispatcher();
    made->AddPlugin(KESTREL_HOST_PLUGIN);
    return std::ref(*made);
  }();
  return dispatcher;
}

HostResult CallHost(const std::string& path, const Parameters& parameters) {
  HostResult result = {AutoCli::CommandInput::New(), AutoCli::CommandOutput::New()};
  result.input->SetDispatcher("vexil");
  result.input->SetCommandPath(WordsOf(path));
  for (const auto& [name, value] : parameters) {
    result.input->AddParameter(name, value);
  }
  GetHostDispatcher().ExecuteCommand(result.input, result.output);
  return result;
}

std::string PrintHost(const std::string& path, const Parameters& parameters, unsigned short width) {
  const HostResult result = CallHost(path, parameters);
  EXPECT_TRUE(result.GetErrors().empty()) << ::testing::PrintToString(result.GetErrors());
  auto format = GetHostDispatcher().GetDefaultOutputFormatParameters(result.input, result.output);
  AutoCli::DisplayContext display;
  display.width = width;
  std::ostringstream out;
  GetHostDispatcher().FormatOutput(result.output, format, display, out);
  return out.str();
}

std::string TextOf(const std::shared_ptr<MetaStruct>& record, const std::string& field) {
  const auto value = record == nullptr ? nullptr : record->GetField(field);
  if (value == nullptr) {
    ADD_FAILURE() << "There is no field " << field;
    return {};
  }
  return value->ToString();
}

std::vector<std::string> FieldOf(const std::vector<std::shared_ptr<MetaStruct>>& records,
                                 const std::string& field) {
  std::vector<std::string> texts;
  for (const auto& record : records) {
    texts.push_back(TextOf(record, field));
  }
  return texts;
}

long NumberOf(const std::shared_ptr<MetaStruct>& record, const std::string& field) {
  const auto number =
      record == nullptr ? nullptr : std::dynamic_pointer_cast<MetaInt>(record->GetField(field));
  if (number == nullptr) {
    ADD_FAILURE() << "There is no number " << field;
    return 0;
  }
  return number->GetValue();
}

}  // namespace Kestrel::Testing

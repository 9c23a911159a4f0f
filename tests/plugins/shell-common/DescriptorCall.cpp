// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/shell-common/DescriptorCall.h"

#include <gtest/gtest.h>

#include <list>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Witness.h"

namespace Kestrel::Testing {
namespace {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

AutoCli::Dispatcher& GetDispatcher() {
  static AutoCli::Dispatcher dispatcher;
  static const bool isLoaded = [] {
    for (const char* const name :
         {"address", "crontab", "disk", "file", "package", "service", "text"}) {
      dispatcher.AddPlugin(KESTREL_DESCRIPTOR_DIR "/" + std::string(name) + ".xml");
    }
    return true;
  }();
  static_cast<void>(isLoaded);
  return dispatcher;
}

Row ToRow(const std::shared_ptr<MetaObject>& value) {
  Row row;
  const auto record = std::dynamic_pointer_cast<MetaStruct>(value);
  if (record == nullptr) {
    ADD_FAILURE() << "The value is no record";
    return row;
  }
  for (const std::string& name : record->GetFieldNames()) {
    row[name] = record->GetField(name)->ToString();
  }
  return row;
}

std::shared_ptr<MetaObject> ValueOf(const DescriptorResult& result) {
  EXPECT_EQ(result.errors, std::vector<std::string>());
  EXPECT_NE(result.value, nullptr);
  return result.value;
}

}  // namespace

DescriptorResult Call(const std::string& path, const Parameters& parameters) {
  const std::vector<std::string> words = WordsIn(path);
  const auto input = AutoCli::CommandInput::New();
  const auto output = AutoCli::CommandOutput::New();
  input->SetDispatcher("vexil");
  input->SetCommandPath(std::list<std::string>(words.begin(), words.end()));
  for (const auto& [name, value] : parameters) {
    input->AddParameter(name, value);
  }
  GetDispatcher().ExecuteCommand(input, output);
  return {output->GetRootObject(), output->GetErrors()};
}

std::vector<std::string> CallErrors(const std::string& path, const Parameters& parameters) {
  const DescriptorResult result = Call(path, parameters);
  EXPECT_EQ(result.value, nullptr);
  return result.errors;
}

std::string CallText(const std::string& path, const Parameters& parameters) {
  const auto value = ValueOf(Call(path, parameters));
  return value == nullptr ? std::string() : value->ToString();
}

Row CallRecord(const std::string& path, const Parameters& parameters) {
  return ToRow(ValueOf(Call(path, parameters)));
}

std::vector<Row> CallRows(const std::string& path, const Parameters& parameters) {
  return ToRows(ValueOf(Call(path, parameters)));
}

std::vector<std::string> CallColumn(const std::string& path, const std::string& field,
                                    const Parameters& parameters) {
  std::vector<std::string> column;
  for (const Row& row : CallRows(path, parameters)) {
    column.push_back(row.at(field));
  }
  return column;
}

std::vector<Row> ToRows(const std::shared_ptr<MetaObject>& value) {
  std::vector<Row> rows;
  const auto list = std::dynamic_pointer_cast<MetaList>(value);
  if (list == nullptr) {
    ADD_FAILURE() << "The value is no list";
    return rows;
  }
  for (const auto& element : list->GetObjects()) {
    rows.push_back(ToRow(element));
  }
  return rows;
}

std::string ScriptPath(const std::string& name) {
  return KESTREL_DESCRIPTOR_DIR "/scripts/" + name;
}

}  // namespace Kestrel::Testing

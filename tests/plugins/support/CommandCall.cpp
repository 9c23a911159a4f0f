// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/support/CommandCall.h"

#include <gtest/gtest.h>

#include <list>

#include "support/Witness.h"

namespace Kestrel::Testing {
namespace {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

std::vector<std::shared_ptr<MetaStruct>> StructsOf(const std::shared_ptr<MetaObject>& value) {
  std::vector<std::shared_ptr<MetaStruct>> structures;
  const auto list = std::dynamic_pointer_cast<MetaList>(value);
  if (list == nullptr) {
    ADD_FAILURE() << "The value is no list";
    return structures;
  }
  for (const auto& element : list->GetObjects()) {
    structures.push_back(std::dynamic_pointer_cast<MetaStruct>(element));
    EXPECT_NE(structures.back(), nullptr) << "An element is no structure";
  }
  return structures;
}

std::shared_ptr<MetaObject> ValueOf(const CommandResult& result) {
  EXPECT_EQ(result.GetErrors(), std::vector<std::string>());
  EXPECT_NE(result.GetValue(), nullptr);
  return result.GetValue();
}

}  // namespace

std::shared_ptr<MetaStruct> CommandResult::GetStruct() const {
  return std::dynamic_pointer_cast<MetaStruct>(GetValue());
}

std::shared_ptr<MetaList> CommandResult::GetList() const {
  return std::dynamic_pointer_cast<MetaList>(GetValue());
}

std::vector<std::shared_ptr<MetaStruct>> CommandResult::GetStructs() const {
  return StructsOf(ValueOf(*this));
}

CommandResult Call(const std::string& path, const Parameters& parameters) {
  const CommandResult result = {AutoCli::CommandInput::New(), AutoCli::CommandOutput::New()};
  const std::vector<std::string> words = WordsIn(path);
  result.input->SetDispatcher("vexil");
  result.input->SetCommandPath(std::list<std::string>(words.begin(), words.end()));
  for (const auto& [name, value] : parameters) {
    result.input->AddParameter(name, value);
  }
  GetDispatcher().ExecuteCommand(result.input, result.output);
  return result;
}

std::vector<std::string> CallErrors(const std::string& path, const Parameters& parameters) {
  const CommandResult result = Call(path, parameters);
  EXPECT_EQ(result.GetValue(), nullptr);
  return result.GetErrors();
}

std::string CallText(const std::string& path, const Parameters& parameters) {
  const auto value = ValueOf(Call(path, parameters));
  return value == nullptr ? std::string() : value->ToString();
}

Row CallStruct(const std::string& path, const Parameters& parameters) {
  const auto structure = std::dynamic_pointer_cast<MetaStruct>(ValueOf(Call(path, parameters)));
  if (structure == nullptr) {
    ADD_FAILURE() << "The value is no structure";
    return {};
  }
  return ToRow(*structure);
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

Row ToRow(const MetaStruct& structure) {
  Row row;
  for (const std::string& name : structure.GetFieldNames()) {
    row[name] = structure.GetField(name)->ToString();
  }
  return row;
}

std::vector<Row> ToRows(const std::shared_ptr<MetaObject>& value) {
  std::vector<Row> rows;
  for (const auto& structure : StructsOf(value)) {
    rows.push_back(structure == nullptr ? Row() : ToRow(*structure));
  }
  return rows;
}

}  // namespace Kestrel::Testing

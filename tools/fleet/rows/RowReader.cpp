// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/fleet/rows/RowReader.h"

#include <kestrel/KestrelException.h>
#include <kestrel/metaobj/MetaObject.h>
#include <kestrel/metaobj/MetaStruct.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace Kestrel::Fleet {

using Host::StructShape;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using Json = nlohmann::json;

namespace {

constexpr char kListSuffix[] = "-list";

struct Field;

/// A declared structure, and how each of its fields is read.
struct Structure {
  StructShape shape;
  std::vector<Field> fields;
};

struct Field {
  std::string name;
  std::string kind;  // without the suffix
  bool isList = false;
  // The shape, if the field is a structure or a list of structures; else null.
  std::shared_ptr<const Structure> inner;
};

Structure ReadStructure(const std::string& typeName, const Json& fields);

Field ReadField(const Json& declared) {
  Field field;
  field.name = declared.at(0).get<std::string>();
  field.kind = declared.at(1).get<std::string>();
  const std::size_t suffix = field.kind.rfind(kListSuffix);
  field.isList = suffix != std::string::npos;
  field.kind = field.kind.substr(0, suffix);
  if (field.kind == "structure") {
    field.inner = std::make_shared<const Structure>(
        ReadStructure(declared.at(2).get<std::string>(), declared.at(3)));
  }
  return field;
}

void DeclareScalar(const Field& field, StructShape& shape) {
  const char* const name = field.name.c_str();
  if (field.kind == "int") {
    shape.Int(name, "");
  } else if (field.kind == "bool") {
    shape.Bool(name, "");
  } else if (field.kind == "string") {
    shape.String(name, "");
  } else {
    throw KestrelException("Unknown kind of a field: " + field.kind);
  }
}

void DeclareList(const Field& field, StructShape& shape) {
  const char* const name = field.name.c_str();
  if (field.kind == "int") {
    shape.Ints(name, "");
  } else if (field.kind == "bool") {
    shape.Bools(name, "");
  } else if (field.kind == "string") {
    shape.Strings(name, "");
  } else {
    throw KestrelException("Unknown kind of a list: " + field.kind);
  }
}

void Declare(const Field& field, StructShape& shape) {
  if (field.kind != "structure") {
    field.isList ? DeclareList(field, shape) : DeclareScalar(field, shape);
  } else if (field.isList) {
    shape.Structs(field.name.c_str(), field.inner->shape, "");
  } else {
    shape.Struct(field.name.c_str(), field.inner->shape, "");
  }
}

/// Declares that a string for people, such as "1.5 GiB", is sorted by the integer in its companion
/// field.
void DeclareSortKeys(const std::vector<Field>& fields, StructShape& shape) {
  for (const Field& text : fields) {
    for (const Field& key : fields) {
      if (key.kind == "int" && !key.isList &&
          (key.name == text.name + " Bytes" || key.name == text.name + " Hundredths")) {
        shape.SortedBy(text.name.c_str(), key.name.c_str());
      }
    }
  }
}

Structure ReadStructure(const std::string& typeName, const Json& fields) {
  Structure structure{StructShape(typeName.c_str()), {}};
  for (const Json& declared : fields) {
    structure.fields.push_back(ReadField(declared));
    Declare(structure.fields.back(), structure.shape);
  }
  DeclareSortKeys(structure.fields, structure.shape);
  return structure;
}

std::shared_ptr<MetaStruct> ToStruct(const Structure& structure, const Json& row);

void SetScalar(const Field& field, const Json& value, MetaStruct& row) {
  if (field.kind == "int") {
    row.SetField(field.name, value.get_ref<const Json::number_integer_t&>());
  } else if (field.kind == "bool") {
    row.SetField(field.name, value.get_ref<const Json::boolean_t&>());
  } else {
    row.SetField(field.name, value.get_ref<const Json::string_t&>());
  }
}

void SetList(const Field& field, const Json& value, MetaStruct& row) {
  if (field.kind == "int") {
    row.SetField(field.name, value.get<std::vector<long>>());
  } else if (field.kind == "bool") {
    row.SetField(field.name, value.get<std::vector<bool>>());
  } else {
    row.SetField(field.name, value.get<std::vector<std::string>>());
  }
}

void SetValue(const Field& field, const Json& value, MetaStruct& row) {
  if (field.kind != "structure") {
    return field.isList ? SetList(field, value, row) : SetScalar(field, value, row);
  }
  if (!field.isList) {
    return row.SetField(field.name, ToStruct(*field.inner, value));
  }
  const auto list = field.inner->shape.NewList();
  for (const Json& element : value) {
    list->Add(ToStruct(*field.inner, element));
  }
  row.SetField(field.name, list);
}

std::shared_ptr<MetaStruct> ToStruct(const Structure& structure, const Json& row) {
  auto result = structure.shape.NewStruct();
  for (const Field& field : structure.fields) {
    SetValue(field, row.at(field.name), *result);
  }
  return result;
}

Json ReadLine(std::istream& stream) {
  std::string line;
  if (!std::getline(stream, line)) {
    throw KestrelException("The rows end too early");
  }
  return Json::parse(line);
}

}  // namespace

struct RowReader::Shape {
  Structure structure;
};

RowReader::RowReader(std::istream& stream) : stream_(stream) {
  try {
    const Json declared = ReadLine(stream);
    shape_.reset(
        new Shape{ReadStructure(declared.at("type").get<std::string>(), declared.at("fields"))});
  } catch (const Json::exception& error) {
    throw KestrelException(std::string("Unable to read the shape of the rows: ") + error.what());
  }
  if (shape_->structure.fields.empty()) {
    throw KestrelException("The shape of the rows has no fields");
  }
}

RowReader::~RowReader() = default;

const StructShape& RowReader::GetShape() const { return shape_->structure.shape; }

std::shared_ptr<MetaList> RowReader::ReadRows() {
  auto rows = GetShape().NewList();
  std::string header;
  try {
    while (std::getline(stream_, header)) {
      ReadPart(header, *rows);
    }
  } catch (const Json::exception& error) {
    throw KestrelException(std::string("Unable to read the rows: ") + error.what());
  }
  return rows;
}

void RowReader::ReadPart(const std::string& header, MetaList& rows) {
  const Json part = Json::parse(header);
  const std::string& hostField = shape_->structure.fields.front().name;
  const auto count = part.at("rows").get<std::size_t>();
  for (std::size_t row = 0; row < count; ++row) {
    Json values = ReadLine(stream_);
    values[hostField] = part.at("host");
    rows.Add(ToStruct(shape_->structure, values));
  }
}

}  // namespace Kestrel::Fleet

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/OutputSpec.h>
#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaObject.h>
#include <kestrel/metaobj/MetaStruct.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// The declared fields of a structure. A structure created from the shape cannot have any other
/// field.
///
/// A command keeps its shape in a function-local static, created at the first use: `static const
/// StructShape shape = StructShape("Uptime").Int("Seconds", "...");`
class StructShape {
 public:
  explicit StructShape(const char* typeName);

  // Each of the following adds a field. `documentation` describes its content and unit.
  StructShape& String(const char* name, const char* documentation);
  StructShape& Int(const char* name, const char* documentation);
  StructShape& Bool(const char* name, const char* documentation);
  StructShape& Strings(const char* name, const char* documentation);
  StructShape& Ints(const char* name, const char* documentation);
  StructShape& Bools(const char* name, const char* documentation);
  StructShape& Struct(const char* name, const StructShape& shape, const char* documentation);
  StructShape& Structs(const char* name, const StructShape& shape, const char* documentation);

  /// Adds a number of bytes as two fields: the integer "<name> Bytes", and the string `name` with
  /// the number in IEC units for people. `SetSize` sets both.
  StructShape& Size(const char* name, const char* documentation);

  /// Adds a fraction of a whole as two fields: the integer "<name> Hundredths", in hundredths of a
  /// percent, and the string `name` with the same value in percent for people. `SetShare` sets
  /// both.
  StructShape& Share(const char* name, const char* documentation);

  /// Sorts rows by the integer field `key` when the user sorts by the string field `field`, which
  /// shows the same quantity.
  StructShape& SortedBy(const char* field, const char* key);

  /// Adds fields that several shapes share.
  StructShape& With(void (*declareFields)(StructShape& shape));

  /// Whether `Size` was called.
  bool HasSizes() const { return !sizes_.empty(); }

  /// Returns the fields that rows can be sorted by, in byte order: those with a scalar value.
  std::vector<std::string> GetSortFields() const;

  /// Returns the field whose values are compared when rows are sorted by `field`, which is one of
  /// GetSortFields: the integer of a quantity, such as the bytes of a size, otherwise `field`
  /// itself.
  const std::string& GetSortKey(const std::string& field) const;

  /// Returns the type of a declared field.
  MetaObj::MetaType GetKind(const std::string& field) const;

  /// Returns a list of columns in which the text of each size replaces its number of bytes.
  std::string ForPeople(const std::string& columns) const;

  /// Returns a structure of this shape without values.
  std::shared_ptr<MetaObj::MetaStruct> NewStruct() const;
  /// Returns an empty list of such structures.
  std::shared_ptr<MetaObj::MetaList> NewList() const;

  /// Declares a structure of this shape as a command's result.
  void DeclareStruct(CallSpec::OutputSpec& spec, const char* description) const;
  /// Declares a list of structures of this shape as a command's result.
  void DeclareList(CallSpec::OutputSpec& spec, const char* description) const;

 private:
  StructShape& Field(const char* name, const std::shared_ptr<MetaObj::MetaObject>& sample,
                     const char* documentation);

  std::shared_ptr<MetaObj::MetaStruct> definition_;
  std::map<std::string, std::string> sizes_;     // from the string to the bytes
  std::map<std::string, std::string> sortKeys_;  // from the string to its integer
};

/// Sets both fields of a size that the shape of `row` declares by `StructShape::Size`.
void SetSize(MetaObj::MetaStruct& row, const std::string& name, long bytes);

/// Sets both fields of a share that the shape of `row` declares by `StructShape::Share`. A negative
/// number of hundredths means that the share is unknown: the fields are set to -1 and "unknown".
void SetShare(MetaObj::MetaStruct& row, const std::string& name, long hundredths);

}  // namespace Kestrel::Host

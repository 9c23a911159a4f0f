// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/OutputSpec.h>
#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaObject.h>
#include <kestrel/metaobj/MetaStruct.h>

#include <memory>

namespace Kestrel::Host {

/// The declared fields of a structure. A structure made from the shape can hold no other field, so
/// a result whose fields are all set has the declared shape.
///
/// A command keeps its shape in a function-local static, made at the first use:
/// `static const StructShape shape = StructShape("Uptime").Int("Seconds", "...");`
class StructShape {
 public:
  explicit StructShape(const char* typeName);

  // Each adds a field; `documentation` says what it contains and in which unit.
  StructShape& String(const char* name, const char* documentation);
  StructShape& Int(const char* name, const char* documentation);
  StructShape& Bool(const char* name, const char* documentation);
  StructShape& Strings(const char* name, const char* documentation);
  StructShape& Ints(const char* name, const char* documentation);
  StructShape& Struct(const char* name, const StructShape& shape, const char* documentation);
  StructShape& Structs(const char* name, const StructShape& shape, const char* documentation);

  /// Adds the fields that several shapes share.
  StructShape& With(void (*declareFields)(StructShape& shape));

  /// A structure of this shape, none of whose fields is set.
  std::shared_ptr<MetaObj::MetaStruct> NewStruct() const;
  /// An empty list of such structures.
  std::shared_ptr<MetaObj::MetaList> NewList() const;

  /// Declares one such structure as a command's result.
  void DeclareStruct(CallSpec::OutputSpec& spec, const char* description) const;
  /// Declares a list of such structures as a command's result.
  void DeclareList(CallSpec::OutputSpec& spec, const char* description) const;

 private:
  StructShape& Field(const char* name, const std::shared_ptr<MetaObj::MetaObject>& sample,
                     const char* documentation);

  std::shared_ptr<MetaObj::MetaStruct> definition_;
};

}  // namespace Kestrel::Host

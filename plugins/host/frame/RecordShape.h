// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/OutputSpec.h>
#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaObject.h>
#include <kestrel/metaobj/MetaStruct.h>

#include <memory>

namespace Kestrel::Host {

/// The declared fields of one kind of record. Records made from it can hold no other field, so a
/// result that was filled whole has the declared shape.
///
/// A command keeps its shape in a function-local static, made when it is first asked for:
/// `static const RecordShape shape = RecordShape("Uptime").Number("Seconds", "...");`
class RecordShape {
 public:
  explicit RecordShape(const char* typeName);

  // Each adds a field; `documentation` tells what it holds and in which unit.
  RecordShape& Text(const char* name, const char* documentation);
  RecordShape& Number(const char* name, const char* documentation);
  RecordShape& Truth(const char* name, const char* documentation);
  RecordShape& Texts(const char* name, const char* documentation);
  RecordShape& Numbers(const char* name, const char* documentation);
  RecordShape& Truths(const char* name, const char* documentation);
  RecordShape& Record(const char* name, const RecordShape& shape, const char* documentation);
  RecordShape& Records(const char* name, const RecordShape& shape, const char* documentation);

  /// An empty record; every declared field has still to be set.
  std::shared_ptr<MetaObj::MetaStruct> NewRecord() const;
  /// An empty list of such records.
  std::shared_ptr<MetaObj::MetaList> NewList() const;

  /// Declares one such record as a command's result.
  void DeclareRecord(CallSpec::OutputSpec& spec, const char* description) const;
  /// Declares a list of such records as a command's result.
  void DeclareList(CallSpec::OutputSpec& spec, const char* description) const;

 private:
  RecordShape& Field(const char* name, const std::shared_ptr<MetaObj::MetaObject>& sample,
                     const char* documentation);

  std::shared_ptr<MetaObj::MetaStruct> definition_;
};

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {

/// A value whose kind does not match its class.
class LyingValue : public MetaObj::MetaObject {
 public:
  explicit LyingValue(MetaObj::MetaType type, std::string text = "a lie");
  std::string ToString() const override;

 private:
  std::string text_;
};

/// A value of the kind String that calls a function whenever it is converted to text.
class ActingValue : public MetaObj::MetaObject {
 public:
  explicit ActingValue(std::function<std::string()> act);
  std::string ToString() const override;

 private:
  std::function<std::string()> act_;
};

/// Makes a structure of type "Row" with these string fields.
std::shared_ptr<MetaObj::MetaStruct> MakeRecord(
    std::initializer_list<std::pair<const char*, const char*>> fields);

/// Makes a structure of type "Disk" with the fields Name and Size.
std::shared_ptr<MetaObj::MetaStruct> MakeDisk(const std::string& name, long size);

/// Makes a list of disks.
std::shared_ptr<MetaObj::MetaList> MakeDisks(
    std::initializer_list<std::pair<const char*, long>> disks);

/// Makes a list of structures, which must all have the fields of the first one.
std::shared_ptr<MetaObj::MetaList> MakeList(
    std::initializer_list<std::shared_ptr<MetaObj::MetaStruct>> structures);

/// Makes a list of mounts that covers all kinds of fields: strings (long, empty, with spaces),
/// integers, a boolean, a nested structure "Usage" and a list of strings.
std::shared_ptr<MetaObj::MetaList> MakeMounts();

/// Makes a chain of `depth` structures of type "Node", each with an integer "a" and, except for the
/// innermost, the next structure in its field "child".
std::shared_ptr<MetaObj::MetaStruct> MakeNested(int depth);

/// Makes the output of a call with this root value.
std::shared_ptr<CallSpec::Output> MakeOutput(const std::shared_ptr<MetaObj::MetaObject>& root);

AutoCli::FormatParameters MakeParameters(
    std::initializer_list<std::pair<const char*, const char*>> parameters);

/// Returns what `formatter` writes for a root value.
std::string FormatToText(AutoCli::Formatter& formatter,
                         const std::shared_ptr<MetaObj::MetaObject>& root,
                         std::initializer_list<std::pair<const char*, const char*>> parameters = {},
                         int width = 0);

}  // namespace Kestrel::Testing

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

/// Announces a kind whose class it is not.
class LyingValue : public MetaObj::MetaObject {
 public:
  explicit LyingValue(MetaObj::MetaType type, std::string text = "a lie");
  std::string ToString() const override;

 private:
  std::string text_;
};

/// A string for those who ask its kind; does something when it is asked for its text.
class ActingValue : public MetaObj::MetaObject {
 public:
  explicit ActingValue(std::function<std::string()> act);
  std::string ToString() const override;

 private:
  std::function<std::string()> act_;
};

/// A structure of type "Row" whose fields are these texts.
std::shared_ptr<MetaObj::MetaStruct> MakeRecord(
    std::initializer_list<std::pair<const char*, const char*>> fields);

/// A structure of type "Disk" with the fields Name and Size.
std::shared_ptr<MetaObj::MetaStruct> MakeDisk(const std::string& name, long size);

/// A list of disks.
std::shared_ptr<MetaObj::MetaList> MakeDisks(
    std::initializer_list<std::pair<const char*, long>> disks);

/// A list of structures that are all of the first one's shape; it declares that shape.
std::shared_ptr<MetaObj::MetaList> MakeList(
    std::initializer_list<std::shared_ptr<MetaObj::MetaStruct>> records);

/// A list of mounts, which has something of everything: texts of many lengths with blanks, an
/// integer, a boolean, a nested structure "Usage", a list of texts and empty texts.
std::shared_ptr<MetaObj::MetaList> MakeMounts();

/// A structure "Node" whose field "child" holds another one, `depth` structures in all; each has a
/// field "a" too.
std::shared_ptr<MetaObj::MetaStruct> MakeNested(int depth);

/// The root value of a call, as a formatter is given it.
std::shared_ptr<CallSpec::Output> MakeOutput(const std::shared_ptr<MetaObj::MetaObject>& root);

AutoCli::FormatParameters MakeParameters(
    std::initializer_list<std::pair<const char*, const char*>> parameters);

/// What `formatter` writes for a root value.
std::string FormatToText(AutoCli::Formatter& formatter,
                         const std::shared_ptr<MetaObj::MetaObject>& root,
                         std::initializer_list<std::pair<const char*, const char*>> parameters = {},
                         int width = 0);

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"

// What the elements of a value document mean, whichever way the document is read.

namespace Kestrel::AutoCli {

inline constexpr const char* kFieldWithoutName =
    "Invalid <field> tag found.  <field> requires a 'name' attribute.";

/// What a result document is refused with when its value cannot be built because of `cause`.
KestrelException UnbuildableXmlOutput(const KestrelException& cause);

enum class XmlValueTag { List, Structure, Int, Bool, String };

/// The meaning of a value element's name. Throws KestrelException for every other name.
XmlValueTag ParseXmlValueTag(const char* name);

/// The value of an `int` element: 0 without content. Throws KestrelException when the content does
/// not begin with an integer that fits in 64 bits.
std::shared_ptr<MetaObj::MetaObject> MakeXmlInt(const std::string& content);

/// The value of a `bool` element: true unless the content is one of three words for false.
std::shared_ptr<MetaObj::MetaObject> MakeXmlBool(const std::string& content);

/// The value of a `string` element: its content, unchanged.
std::shared_ptr<MetaObj::MetaObject> MakeXmlString(std::string content);

/// Gathers the elements of a `list` element. The first structure declares the shape of all.
class XmlListBuilder {
 public:
  /// Throws KestrelException when `typeWord` names no kind of list.
  explicit XmlListBuilder(const std::string& typeWord);

  /// Throws KestrelException when the list cannot hold `element`.
  void Add(const std::shared_ptr<MetaObj::MetaObject>& element);

  /// The list. Throws KestrelException when there are no lists of this kind.
  std::shared_ptr<MetaObj::MetaList> Finish();

 private:
  MetaObj::MetaType kind_;
  std::shared_ptr<MetaObj::MetaList> list_;
};

}  // namespace Kestrel::AutoCli

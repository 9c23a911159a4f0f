// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"

// The meaning of the elements of a value document. Shared by both ways to read one: from the events
// of `ScanXml`, and from a tree.

namespace Kestrel::AutoCli {

inline constexpr const char* kFieldWithoutName =
    "Invalid <field> tag found.  <field> requires a 'name' attribute.";

/// Returns the exception for a result document whose value cannot be built because of `cause`.
KestrelException UnbuildableXmlOutput(const KestrelException& cause);

enum class XmlValueTag { List, Structure, Int, Bool, String };

/// Returns the kind of the value element `name`. Throws KestrelException for any other name.
XmlValueTag ParseXmlValueTag(std::string_view name);

/// Returns the value of an `int` element: the integer that `content` begins with, 0 when it is
/// empty. Throws KestrelException when there is no integer or it does not fit in 64 bits.
std::shared_ptr<MetaObj::MetaObject> MakeXmlInt(const std::string& content);

/// Returns the value of a `bool` element: false for the contents "false", "f" and "0", true for all
/// others.
std::shared_ptr<MetaObj::MetaObject> MakeXmlBool(const std::string& content);

/// Returns the value of a `string` element: its content, with invalid UTF-8 escaped (see
/// `MetaString::NewUtf8WithEscapes`).
std::shared_ptr<MetaObj::MetaObject> MakeXmlString(std::string content);

/// Makes the value of a `list` element, one element after the other. In a list of structures, the
/// first structure declares the shape of all.
class XmlListBuilder {
 public:
  /// Begins the list of an element with this `type` attribute. Throws KestrelException when it
  /// names no type.
  explicit XmlListBuilder(std::string_view typeWord);

  /// Appends an element. Throws KestrelException when it has another type or shape, and for every
  /// element when the type is "list".
  void Add(const std::shared_ptr<MetaObj::MetaObject>& element);

  /// Returns the list. Throws KestrelException for the type "list": there are no lists of lists.
  std::shared_ptr<MetaObj::MetaList> Finish();

 private:
  MetaObj::MetaType kind_;
  std::shared_ptr<MetaObj::MetaList> list_;
};

}  // namespace Kestrel::AutoCli

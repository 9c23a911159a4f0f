// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {

/// The kind that `GetType` returns for values of `Class`.
template <typename Class>
inline constexpr MetaObj::MetaType kKindOf = MetaObj::MetaType::Int;
template <>
inline constexpr MetaObj::MetaType kKindOf<MetaObj::MetaBool> = MetaObj::MetaType::Bool;
template <>
inline constexpr MetaObj::MetaType kKindOf<MetaObj::MetaString> = MetaObj::MetaType::String;
template <>
inline constexpr MetaObj::MetaType kKindOf<MetaObj::MetaStruct> = MetaObj::MetaType::Struct;
template <>
inline constexpr MetaObj::MetaType kKindOf<MetaObj::MetaList> = MetaObj::MetaType::List;

/// Returns `value` as a `Class`, one of the five value classes, or null if it is null or of another
/// class. Its kind alone does not decide, because a value of a foreign class, which is none of the
/// five, can have any kind.
template <typename Class>
const Class* ViewAs(const MetaObj::MetaObject* value) {
  return value != nullptr && value->GetType() == kKindOf<Class> &&
                 MetaObj::ValueAccess::IsValueClass(*value)
             ? static_cast<const Class*>(value)
             : nullptr;
}

/// Returns what formatters write in place of a value of a foreign class that has this kind. Empty
/// if `kind` is not one of the enumerators.
inline std::string_view MisreadText(MetaObj::MetaType kind) {
  switch (kind) {
    case MetaObj::MetaType::Bool:
      return "Error reading a bool";
    case MetaObj::MetaType::Int:
      return "Error reading a int";
    case MetaObj::MetaType::String:
      return "Error reading a string";
    case MetaObj::MetaType::Struct:
      return "Error reading a struct from output.";
    case MetaObj::MetaType::List:
      return "Error reading a List";
  }
  return "";
}

/// As above, with the kind of `value`. Returns `otherText` if `value` is null or its kind unknown.
inline std::string_view MisreadText(const MetaObj::MetaObject* value, std::string_view otherText) {
  const std::string_view text = value == nullptr ? "" : MisreadText(value->GetType());
  return text.empty() ? otherText : text;
}

}  // namespace Kestrel::AutoCli

#pragma once

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {

/// The kind that values of the class `Class` announce.
template <typename Class>
constexpr MetaObj::MetaType kKindOf = MetaObj::MetaType::Int;
template <>
constexpr MetaObj::MetaType kKindOf<MetaObj::MetaBool> = MetaObj::MetaType::Bool;
template <>
constexpr MetaObj::MetaType kKindOf<MetaObj::MetaString> = MetaObj::MetaType::String;
template <>
constexpr MetaObj::MetaType kKindOf<MetaObj::MetaStruct> = MetaObj::MetaType::Struct;
template <>
constexpr MetaObj::MetaType kKindOf<MetaObj::MetaList> = MetaObj::MetaType::List;

/// `value` as one of the five value classes, or null when it is null or of another class, whatever
/// kind it announces.
template <typename Class>
const Class* ViewAs(const MetaObj::MetaObject* value) {
  return value != nullptr && value->GetType() == kKindOf<Class> &&
                 MetaObj::ValueAccess::IsValueClass(*value)
             ? static_cast<const Class*>(value)
             : nullptr;
}

}  // namespace Kestrel::AutoCli

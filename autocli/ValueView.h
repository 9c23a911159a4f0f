#pragma once

#include <typeinfo>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// `value` as the concrete class `Kind`, or null when it is null or of another class, whatever
/// kind it announces. The value classes are leaves, which makes this cheaper than a cast that has
/// to look for derived classes.
template <typename Kind>
const Kind* ViewAs(const MetaObj::MetaObject* value) {
  return value != nullptr && typeid(*value) == typeid(Kind) ? static_cast<const Kind*>(value)
                                                            : nullptr;
}

}  // namespace Kestrel::AutoCli

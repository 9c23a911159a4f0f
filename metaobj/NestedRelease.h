#pragma once

#include <memory>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// Lets go of a value that a structure or list held. However deep values nest in one another, the
/// stack stays shallow: beyond some depth a value waits until the outermost one is done.
void ReleaseNested(std::shared_ptr<MetaObject>&& value) noexcept;

}  // namespace Kestrel::MetaObj

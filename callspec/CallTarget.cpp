#include "kestrel/callspec/CallTarget.h"

namespace Kestrel::CallSpec {

CallTarget::~CallTarget() = default;

}  // namespace Kestrel::CallSpec

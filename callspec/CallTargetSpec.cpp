#include "kestrel/callspec/CallTargetSpec.h"

namespace Kestrel::CallSpec {

CallTargetSpec::~CallTargetSpec() = default;

}  // namespace Kestrel::CallSpec

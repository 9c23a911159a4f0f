#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

Plugin::~Plugin() = default;

}  // namespace Kestrel::AutoCli

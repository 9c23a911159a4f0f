#pragma once

#include <cstdint>

#include "kestrel/Export.h"

namespace Kestrel::AutoCli {

struct DisplayContext {
  std::uint16_t width = 0;
  std::uint16_t height = 0;
};

}  // namespace Kestrel::AutoCli

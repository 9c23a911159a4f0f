#pragma once

#include <string>

#include "kestrel/Export.h"

namespace Kestrel::AutoCli {

struct FormatterParam {
  std::string name;
  std::string description;
  bool flag = false;
};

}  // namespace Kestrel::AutoCli

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

class KESTREL_API CallTarget {
 public:
  virtual ~CallTarget();
  virtual void Execute(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) = 0;
};

}  // namespace Kestrel::CallSpec

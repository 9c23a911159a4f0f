#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"

namespace Kestrel::CallSpec {

class KESTREL_API CallTargetSpec {
 public:
  virtual ~CallTargetSpec();
  virtual std::shared_ptr<InputSpec> GetInputSpec() = 0;
  virtual std::shared_ptr<OutputSpec> GetOutputSpec() = 0;
};

}  // namespace Kestrel::CallSpec

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::CallSpec {

class Input;
class KESTREL_API InputSpec {
 public:
  static std::shared_ptr<InputSpec> New();
  void AddParameter(const std::shared_ptr<ParameterSpec>& spec);
  const std::vector<std::shared_ptr<ParameterSpec>>& GetParameters() const;
  void SetContextSupported(const std::string& name);
  bool IsContextSupported(const std::string& name) const;
  bool Validate(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output) const;

 private:
  InputSpec();
};

}  // namespace Kestrel::CallSpec

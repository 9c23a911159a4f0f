#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/callspec/CallTarget.h"

namespace Kestrel::AutoCli {

class KESTREL_API Command : public CommandSpec, public CallSpec::CallTarget {
 public:
  ~Command() override;
  void Execute(const std::shared_ptr<CallSpec::Input>& input,
               const std::shared_ptr<CallSpec::Output>& output) override;
  virtual void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                               const std::shared_ptr<CallSpec::Output>& output) = 0;

 protected:
  Command();
};

}  // namespace Kestrel::AutoCli

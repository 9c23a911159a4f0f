#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::AutoCli {

class KESTREL_API CommandList : public Command {
 public:
  ~CommandList() override;
  static std::shared_ptr<CommandList> New(std::shared_ptr<Namespace> root);
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;
  static std::shared_ptr<MetaObj::MetaStruct> GetOutputStructure();
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;

 private:
  explicit CommandList(Namespace* root);
};

}  // namespace Kestrel::AutoCli

#pragma once

#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::AutoCli {

class KESTREL_API CommandOutput : public CallSpec::Output {
 public:
  ~CommandOutput() override;
  static std::shared_ptr<CommandOutput> New();
  void SetFormattedString(const std::string& text);
  const std::string& GetFormattedString() const;

 private:
  CommandOutput();
};

}  // namespace Kestrel::AutoCli

#pragma once

#include <list>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/callspec/Input.h"

namespace Kestrel::AutoCli {

class KESTREL_API CommandInput : public CallSpec::Input {
 public:
  ~CommandInput() override;
  static std::shared_ptr<CommandInput> New();
  void SetDispatcher(const std::string& dispatcher);
  const std::string& GetDispatcher() const;
  void SetCommandPath(const std::list<std::string>& path);
  const std::list<std::string>& GetCommandPath() const;
  std::string GetCommandPathString() const;

 private:
  CommandInput();
};

}  // namespace Kestrel::AutoCli

#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

class KESTREL_API InternalPlugin : public Plugin {
 public:
  ~InternalPlugin() override;
  static std::shared_ptr<InternalPlugin> New();
  void Initialize() override;
  const std::string& GetName() const override;
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;
  bool HasFormatter(const std::string& name) override;
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

 private:
  InternalPlugin();
};

}  // namespace Kestrel::AutoCli

#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

class KESTREL_API SharedLibraryPlugin : public Plugin {
 public:
  using RegisterFunction = void (*)(std::shared_ptr<Namespace> root);  // extern "C" void
                                                                       // AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace>
                                                                       // root)
  ~SharedLibraryPlugin() override;
  static std::shared_ptr<SharedLibraryPlugin> New(const std::string& path);
  void Initialize() override;
  const std::string& GetName() const override;
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;
  bool HasFormatter(const std::string& name) override;
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

 private:
  explicit SharedLibraryPlugin(const std::string& path);
};

}  // namespace Kestrel::AutoCli

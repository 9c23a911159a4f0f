#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/autocli/Plugin.h"
#include "kestrel/autocli/RootNamespace.h"

namespace Kestrel::AutoCli {

class KESTREL_API Dispatcher {
 public:
  Dispatcher();
  virtual ~Dispatcher();
  Dispatcher(const Dispatcher&) = delete;
  Dispatcher& operator=(const Dispatcher&) = delete;
  std::shared_ptr<RootNamespace> GetRootNamespace() const;
  void AddPlugin(const std::string& path);
  void AddExternalDirectory(const std::string& dir);
  void AddExternalDirectoryInt(const std::string& dir, bool reportMissing);
  void AddDefaultDirectories();
  void RegisterPlugin(std::shared_ptr<Plugin> plugin);
  void ResetRegistrations();
  std::vector<std::string> GetPluginNames() const;
  bool HasFormatter(const std::string& name) const;
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) const;
  std::vector<std::shared_ptr<Formatter>> GetFormatters() const;
  std::shared_ptr<Command> GetCommand(std::shared_ptr<CommandInput> input,
                                      std::shared_ptr<CommandOutput> output);
  bool ExecuteCommand(std::shared_ptr<CommandInput> input, std::shared_ptr<CommandOutput> output);
  FormatParameters GetDefaultOutputFormatParameters(std::shared_ptr<CommandInput> input,
                                                    std::shared_ptr<CommandOutput> output);
  bool FormatOutput(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
                    DisplayContext& display, std::ostream& out);

 private:
  std::map<std::string, std::shared_ptr<Plugin>> formatterOwners;  // destroyed last
  std::vector<std::shared_ptr<Plugin>> plugins;
  std::vector<std::shared_ptr<Plugin>> retained;
                                                  // use (failed registration, ResetRegistrations)
  std::shared_ptr<RootNamespace>
      root;  // MUST stay the last member: destroyed first, before any dlclose
};

}  // namespace Kestrel::AutoCli

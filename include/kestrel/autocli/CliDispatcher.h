#pragma once

#include <istream>

#include "kestrel/Export.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/OptionParser.h"

namespace Kestrel::AutoCli {

class KESTREL_API CliDispatcher : public Dispatcher {
 public:
  CliDispatcher();
  ~CliDispatcher() override;
  [[noreturn]] void HandleArgvInput(
      int argc, const char* const* argv);  // exit(0) or exit(1), or a KestrelException passes out
  bool ParseStreamInput(std::istream& in);
  bool HandleOptions(OptionParser& parser, bool fromArgv);
  bool HandleDispatcherOptions(OptionParser& parser, FormatParameters& params,
                               const std::shared_ptr<CallSpec::Output>& output);
  void ValidateDispatcherParameters(OptionParser& parser,
                                    const std::shared_ptr<CallSpec::Output>& output);
  void GetDisplayContext(DisplayContext& display) const;
  FormatParameters GetHelpFormatParams() const;
  void PrintError(const std::shared_ptr<CallSpec::Output>& output) const;
  void PrintChildren(std::shared_ptr<NamespaceNode> node, std::shared_ptr<CommandOutput> output);

 private:
  std::string dispatcherName;
};

}  // namespace Kestrel::AutoCli

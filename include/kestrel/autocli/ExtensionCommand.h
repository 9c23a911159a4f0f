#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"

namespace Kestrel::AutoCli {

class KESTREL_API ExtensionCommand : public Command {
 public:
  ~ExtensionCommand() override;
  static std::shared_ptr<ExtensionCommand> New();
  void SetInputSpec(const std::shared_ptr<CallSpec::InputSpec>& spec);
  void SetOutputSpec(const std::shared_ptr<CallSpec::OutputSpec>& spec);
  void SetExecuteCommand(const std::string& commandTemplate);
  void SetStdin(const std::string& stdinTemplate);
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override;
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override;
  std::string SubstituteInput(const std::shared_ptr<CallSpec::Input>& input, bool forStdin);
  static std::string SanitizeInput(const std::string& value);
  static std::string SanitizeChar(const std::string& value, char c);
  static bool isBadChar(char c);
  static std::size_t FindPairedTokenSize(const char* text, std::size_t position, std::size_t length,
                                         char open, char close);

 private:
  ExtensionCommand();
};

}  // namespace Kestrel::AutoCli

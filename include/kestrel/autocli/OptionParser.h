#pragma once

#include <list>
#include <memory>
#include <stack>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::AutoCli {

class KESTREL_API OptionParser {
 public:
  OptionParser();
  explicit OptionParser(const std::string& dispatcher);
  void ParseArgv(int argc, const char* const* argv);
  void ParseVector(std::vector<std::string> tokens);
  bool ParseString(
      const std::string& line);  // false = a command line was parsed, true = nothing on it
  void ParseStack(std::stack<std::string> tokens);
  void SetInputSpec(std::shared_ptr<CallSpec::InputSpec> spec);
  void ProcessCommandArguments();
  const std::vector<std::pair<std::string, std::string>>& GetCommandParameters();
  std::vector<std::string> GetCommandParameter(const std::string& name);
  bool HasCommandParameter(const std::string& name);
  const std::vector<std::pair<std::string, std::string>>& GetDispatcherParameters() const;
  std::vector<std::string> GetDispatcherParameter(const std::string& name) const;
  bool HasDispatcherParameter(const std::string& name) const;
  const std::string& GetDispatcher() const;
  const std::list<std::string>& GetCommandPath() const;
  const std::list<std::string>& GetNamespaces() const;
  const std::vector<std::string>& GetParseErrors() const;
  bool IsParsed() const;
  std::string ToString();
  std::string GetSilentString();
  bool IsParameter(const std::string& token) const;
  bool ParseParameter(const std::string& token, std::string& name, std::string& value);
  std::list<std::string> ParsePath(std::stack<std::string>& tokens);
  std::vector<std::pair<std::string, std::string>> ParseParameters(std::stack<std::string>& tokens);
};

}  // namespace Kestrel::AutoCli

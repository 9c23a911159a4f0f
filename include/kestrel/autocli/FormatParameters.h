#pragma once

#include <map>
#include <string>
#include <vector>

#include "kestrel/Export.h"

namespace Kestrel::AutoCli {

class KESTREL_API FormatParameters {
 public:
  FormatParameters();
  void SetFormatter(std::string name);
  void SetFormatter(const char* name);
  const std::string& GetFormatter() const;
  const std::map<std::string, std::string>& GetParameters() const;
  bool HasParameter(const std::string& key) const;
  const std::string& GetParameter(const std::string& key) const;
  void SetParameter(std::string key, std::string value);
  void SetParameter(const char* key, const char* value);
  void OverrideValues(const FormatParameters& other);
  std::vector<std::string> GetParameterAsList(const std::string& key) const;
};

}  // namespace Kestrel::AutoCli

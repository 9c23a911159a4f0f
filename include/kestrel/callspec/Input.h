#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::CallSpec {

class KESTREL_API Input {
 public:
  virtual ~Input();
  static std::shared_ptr<Input> New();
  void AddParameter(const std::string& name, const std::string& value);
  void AddParameter(const std::string& name,
                    const std::vector<std::string>& values);  // one append per value
  void SetInputSpec(std::shared_ptr<InputSpec> spec);
  const std::map<std::string, std::vector<std::string>>& GetParameters() const;
  bool HasParameter(const std::string& name) const;
  bool HasParameter(const char* name) const;
  bool IsFlagSet(const std::string& name) const;
  bool IsFlagSet(const char* name) const;
  ParameterType GetParameterType(const std::string& name) const;
  const std::string& GetParameter(const std::string& name) const;
  const std::string& GetParameter(const char* name) const;
  std::int64_t GetParameterInt(const std::string& name) const;
  bool GetParameterBool(const std::string& name) const;
  void GetParameterList(const std::string& name, std::vector<std::string>& out) const;
  void GetParameterIntList(const std::string& name, std::vector<std::int64_t>& out) const;
  void GetParameterBoolList(const std::string& name, std::vector<bool>& out) const;
  std::string GetParameterListAsString(const std::string& name, char separator, bool quote) const;
  void SetContext(const std::string& name, const std::string& value);
  const std::string& GetContext(const std::string& name) const;

 protected:
  Input();
};

}  // namespace Kestrel::CallSpec

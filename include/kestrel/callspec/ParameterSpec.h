#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"

namespace Kestrel::CallSpec {

enum ParameterType : std::int32_t {
  String = 0,
  Int = 1,
  Bool = 2,
  Flag = 3,
  StringList = 4,
  IntList = 5,
  BoolList = 6
};
class KESTREL_API ParameterSpec {
 public:
  static std::shared_ptr<ParameterSpec> New(const std::string& name, ParameterType type);
  static std::shared_ptr<ParameterSpec> New(std::string&& name, ParameterType type);
  static std::shared_ptr<ParameterSpec> New(const char* name, ParameterType type);
  const std::string& GetName() const;
  ParameterType GetParameterType() const;
  ParameterType GetType() const;
  const std::string& GetShortName() const;
  bool IsRequired() const;
  bool IsSecret() const;
  const std::shared_ptr<ParameterConstraint>& GetConstraint() const;
  void SetShortName(std::string shortName);
  void SetShortName(const char* shortName);
  void SetDescription(std::string description);
  void SetDescription(const char* description);
  void SetRequired(bool required);
  void SetSecret(bool secret);
  void SetConstraint(const std::shared_ptr<ParameterConstraint>& constraint);
  bool AllowMultiple() const;
  std::string GetDescription(bool substitute) const;
  static bool GetInt(const std::string& text, std::int64_t& out);
  static bool GetBool(const std::string& text, bool& out);
  bool Validate(const std::vector<std::string>& values,
                const std::shared_ptr<Output>& output) const;

 private:
  ParameterSpec(std::string name, ParameterType type);
};

}  // namespace Kestrel::CallSpec

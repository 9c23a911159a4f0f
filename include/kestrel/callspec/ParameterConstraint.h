#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

enum ParameterConstraintType : std::int32_t {
  NoConstraint = 0,
  IntRange = 1,
  IntEnum = 2,
  StringEnum = 3,
  StringRegex = 4
};
class KESTREL_API ParameterConstraint {
 public:
  static std::shared_ptr<ParameterConstraint> New(ParameterConstraintType type);
  ParameterConstraintType GetType() const;
  void SetIntRange(std::int64_t min, std::int64_t max);
  void GetIntRange(std::int64_t& min, std::int64_t& max) const;
  void AddIntEnum(std::int64_t value);
  void AddStringEnum(
      std::string value,
      std::string description = std::string());  // default ADDED: one std::string argument
  void AddStringEnum(const char* value, const char* description);
  void AddStringEnum(const char* value);
  void SetStringRegex(const std::string& regex);
  const std::vector<std::int64_t>& GetIntEnum() const;
  const std::vector<std::string>& GetStringEnum() const;
  const std::map<std::string, std::string>& GetStringEnumWithDesc() const;
  const std::string& GetStringRegex() const;
  std::string ToString() const;
  bool Validate(const std::string& value, const std::string& name,
                const std::shared_ptr<Output>& output) const;

 private:
  explicit ParameterConstraint(ParameterConstraintType type);
};

}  // namespace Kestrel::CallSpec

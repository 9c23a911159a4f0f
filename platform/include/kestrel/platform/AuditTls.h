#pragma once

#include <string>

namespace AuditTls {
void SetAuditParam(const std::string& name, const std::string& value);
std::string GetAuditParam(const std::string& name);  // stand-in only: lets tests look
class AuditParamOnStack {
 public:
  AuditParamOnStack(const std::string& name, const std::string& value);
  ~AuditParamOnStack();  // restores the value from before
  AuditParamOnStack(const AuditParamOnStack&) = delete;
  AuditParamOnStack& operator=(const AuditParamOnStack&) = delete;

 private:
  std::string name_;
  std::string previous_;
};
}  // namespace AuditTls

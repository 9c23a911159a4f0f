// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

/// The functions and the class that Kestrel uses from the host's audit library, for audit
/// parameters: named strings that describe on whose behalf the process acts.
namespace AuditTls {

/// Sets the audit parameter `name`; an empty value means none.
void SetAuditParam(const std::string& name, const std::string& value);

/// Returns the audit parameter `name`, empty when it is not set. For tests: the host's library does
/// not have this function, only the stand-in that platform/ has for that library.
std::string GetAuditParam(const std::string& name);

/// Sets an audit parameter; its destructor restores the earlier value.
class AuditParamOnStack {
 public:
  AuditParamOnStack(const std::string& name, const std::string& value);
  ~AuditParamOnStack();
  AuditParamOnStack(const AuditParamOnStack&) = delete;
  AuditParamOnStack& operator=(const AuditParamOnStack&) = delete;

 private:
  std::string name_;
  std::string previous_;
};

}  // namespace AuditTls

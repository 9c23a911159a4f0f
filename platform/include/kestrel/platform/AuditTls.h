// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

/// The host's audit library: named texts that go with what the process does next.
namespace AuditTls {

/// Sets the audit parameter `name`; an empty value stands for none.
void SetAuditParam(const std::string& name, const std::string& value);

/// The value of the audit parameter `name`, empty when it has none. The stand-in alone offers this,
/// so that tests can look.
std::string GetAuditParam(const std::string& name);

/// Sets an audit parameter for as long as it lives, then restores the value from before.
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

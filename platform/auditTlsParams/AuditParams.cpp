// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <map>

#include "kestrel/platform/AuditTls.h"

namespace AuditTls {

namespace {

std::map<std::string, std::string>& GetAuditParams() {
  static std::map<std::string, std::string> params;
  return params;
}

}  // namespace

void SetAuditParam(const std::string& name, const std::string& value) {
  GetAuditParams()[name] = value;
}

std::string GetAuditParam(const std::string& name) {
  const auto found = GetAuditParams().find(name);
  return found == GetAuditParams().end() ? std::string() : found->second;
}

AuditParamOnStack::AuditParamOnStack(const std::string& name, const std::string& value)
    : name_(name), previous_(GetAuditParam(name)) {
  SetAuditParam(name_, value);
}

AuditParamOnStack::~AuditParamOnStack() { SetAuditParam(name_, previous_); }

}  // namespace AuditTls

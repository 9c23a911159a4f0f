// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "kestrel/platform/AuditTls.h"

namespace {

TEST(AuditParamsTest, AParameterThatWasNeverSetIsEmpty) {
  EXPECT_EQ("", AuditTls::GetAuditParam("never"));
}

TEST(AuditParamsTest, AParameterKeepsTheValueSetLast) {
  AuditTls::SetAuditParam("last", "first");
  AuditTls::SetAuditParam("last", "second");
  EXPECT_EQ("second", AuditTls::GetAuditParam("last"));
}

TEST(AuditParamsTest, TheScopeRestoresTheEarlierValue) {
  AuditTls::SetAuditParam("scoped", "outer");
  {
    const AuditTls::AuditParamOnStack scope("scoped", "inner");
    EXPECT_EQ("inner", AuditTls::GetAuditParam("scoped"));
    {
      const AuditTls::AuditParamOnStack innermost("scoped", "");
      EXPECT_EQ("", AuditTls::GetAuditParam("scoped"));
    }
    EXPECT_EQ("inner", AuditTls::GetAuditParam("scoped"));
  }
  EXPECT_EQ("outer", AuditTls::GetAuditParam("scoped"));
}

TEST(AuditParamsTest, TheScopeLeavesAnUnsetParameterUnset) {
  { const AuditTls::AuditParamOnStack scope("fresh", "value"); }
  EXPECT_EQ("", AuditTls::GetAuditParam("fresh"));
}

TEST(AuditParamsTest, TheScopeRestoresWhenSomethingThrows) {
  AuditTls::SetAuditParam("thrown", "outer");
  try {
    const AuditTls::AuditParamOnStack scope("thrown", "inner");
    throw 1;
  } catch (int) {
    EXPECT_EQ("outer", AuditTls::GetAuditParam("thrown"));
  }
}

}  // namespace

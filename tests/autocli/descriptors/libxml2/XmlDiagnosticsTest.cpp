// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/libxml2/XmlDiagnostics.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <unistd.h>

#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::StreamCapture;

constexpr char kBroken[] = "<o><a></o>";

void ParseBroken() { xmlFreeDoc(xmlReadMemory(kBroken, sizeof(kBroken) - 1, "test", nullptr, 0)); }

/// An error handler such as a program may have. It counts the errors.
class OwnHandler {
 public:
  OwnHandler() {
    xmlSetStructuredErrorFunc(&errors_, [](void* count, auto*) { ++*static_cast<int*>(count); });
  }
  OwnHandler(const OwnHandler&) = delete;
  OwnHandler& operator=(const OwnHandler&) = delete;
  ~OwnHandler() { xmlSetStructuredErrorFunc(nullptr, nullptr); }

  int GetCount() const { return errors_; }

 private:
  int errors_ = 0;
};

TEST(XmlDiagnosticsTest, ForwardsToTheHandlerOfTheProgram) {
  const OwnHandler handler;
  {
    const XmlDiagnostics diagnostics;
    ParseBroken();
    EXPECT_FALSE(diagnostics.HasMemoryFailure());
  }
  EXPECT_EQ(handler.GetCount(), 2);
  ParseBroken();
  EXPECT_EQ(handler.GetCount(), 4);
}

TEST(XmlDiagnosticsTest, ForwardsToStandardErrorIfThereIsNoHandler) {
  StreamCapture captured(STDERR_FILENO);
  const XmlDiagnostics diagnostics;
  ParseBroken();
  EXPECT_EQ(captured.GetText().substr(0, 20), "test:1: parser error");
}

}  // namespace
}  // namespace Kestrel::AutoCli

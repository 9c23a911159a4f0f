// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#define CATCH_CONFIG_MAIN
#include "kestrel/testing/Catch2.h"

#include "kestrel/testing/CommandRun.h"

namespace Kestrel::Testing {
namespace {

TEST_CASE("a plug-in answers in its declared shape") {
  const CommandRun run = Run(KESTREL_ECHO_PLUGIN, {"echo", "say", "--text", "hello"});
  CHECK(run.Output() == "hello\n");
  CheckPasses(CheckShape(run));
}

TEST_CASE("a verdict with problems fails", "[.failing]") {
  CheckPasses(RunHostileValues(KESTREL_ECHO_PLUGIN, "no such"));
}

}  // namespace
}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/testing/CommandRun.h>

#include <cstdio>
#include <cstdlib>

namespace Testing = Kestrel::Testing;

namespace {

bool Report(const char* what, const Testing::Verdict& verdict) {
  std::printf("%s: %s\n%s", what, verdict ? "passed" : "failed", verdict.ToString().c_str());
  return static_cast<bool>(verdict);
}

Testing::Verdict CheckGreeting(const Testing::TestTool& tool) {
  Testing::Verdict verdict;
  const Testing::CommandRun run = tool.Run({"hello", "greet", "--name", "Ada", "--loud"});
  if (run.Status() != 0 ||
      Printed(run, "simple", {{"fields", "Text"}}).find("Ada!") == std::string::npos) {
    verdict.Add("it does not greet Ada: " + run.Output());
  }
  const Testing::CommandRun refused = tool.Run({"hello", "greet", "--name=Nobody"});
  if (refused.Messages() != Testing::Words{"There is nobody to greet"}) {
    verdict.Add("it greets nobody");
  }
  return verdict;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("hello-test PLUGIN\n", stderr);
    return EXIT_FAILURE;
  }
  const Testing::TestTool tool(argv[1]);
  bool isPassed = Report("greeting", CheckGreeting(tool));
  isPassed &= Report("examples", RunExamples(tool));
  isPassed &= Report("hostile values", RunHostileValues(tool, "hello greet"));
  return isPassed ? EXIT_SUCCESS : EXIT_FAILURE;
}

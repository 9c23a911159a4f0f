// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Tests the audit parameters, which are visible only to a program that links the library's objects.

#include <gmock/gmock.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/platform/AuditTls.h"
#include "support/SampleCommands.h"
#include "support/ScopedEnvironment.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {

namespace {

using Kestrel::Testing::MakeAnsweringCommand;
using Kestrel::Testing::RegisterAt;
using Kestrel::Testing::ScopedEnvironment;
using Kestrel::Testing::StreamCapture;

class CliDispatcherAuditTest : public ::testing::Test {
 protected:
  void SetUp() override {
    AuditTls::SetAuditParam("user", "before");
    command->SetDefaultOutputFormatter("simple");
    command->work = [this](const auto&, const auto& output) {
      seen = AuditTls::GetAuditParam("user");
      output->SetRootObject(MetaObj::MetaString::New("done"));
    };
    RegisterAt(dispatcher.GetRootNamespace(), {"say"}, command);
  }

  void Handle(const std::string& word) {
    OptionParser parser;
    parser.ParseVector({word});
    const StreamCapture out(STDOUT_FILENO);
    dispatcher.HandleOptions(parser, true);
  }

  CliDispatcher dispatcher;
  std::shared_ptr<Kestrel::Testing::SampleCommand> command = MakeAnsweringCommand("done");
  std::string seen = "nothing";
};

TEST_F(CliDispatcherAuditTest, TheUserComesFromTheEnvironmentWhileTheCommandRuns) {
  const ScopedEnvironment user("OPR_USERNAME", "alice");
  Handle("say");
  EXPECT_EQ("alice", seen);
  EXPECT_EQ("before", AuditTls::GetAuditParam("user"));
}

TEST_F(CliDispatcherAuditTest, TheUserIsEmptyIfTheEnvironmentHasNone) {
  for (const std::optional<std::string>& value :
       {std::optional<std::string>(), std::optional<std::string>("")}) {
    const ScopedEnvironment user("OPR_USERNAME", value);
    seen = "nothing";
    Handle("say");
    EXPECT_EQ("", seen);
    EXPECT_EQ("before", AuditTls::GetAuditParam("user"));
  }
}

TEST_F(CliDispatcherAuditTest, TheUserIsRestoredWhenAnUnknownWordThrows) {
  const ScopedEnvironment user("OPR_USERNAME", "alice");
  EXPECT_THROW(Handle("nosuch"), KestrelException);
  EXPECT_EQ("before", AuditTls::GetAuditParam("user"));
}

}  // namespace

}  // namespace Kestrel::AutoCli

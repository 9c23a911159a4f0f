// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/DataValues.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleCommands.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

std::shared_ptr<MetaStruct> MakeRow(const std::string& name, int size) {
  const auto row = MetaStruct::New("Row");
  row->SetField("Name", name);
  row->SetField("Mount Point", "/" + name);
  row->SetField("Size", size);
  row->SetField("Tags", std::vector<std::string>{name + "1", name + "2"});
  return row;
}

std::shared_ptr<MetaList> MakeRows(int count) {
  auto rows = MetaList::New(MetaObj::MetaType::Struct, MakeRow("", 0));
  for (int i = 0; i < count; ++i) {
    rows->Add(MakeRow("row" + std::to_string(i), i));
  }
  return rows;
}

std::shared_ptr<SampleCommand> MakeRowsCommand(SampleCommand::Work work) {
  auto command = std::make_shared<SampleCommand>();
  command->outputSpec = OutputSpec::New();
  command->outputSpec->SetRootObject(MakeRows(0));
  command->work = std::move(work);
  return command;
}

// Sends SIGALRM to this process once, and counts it. Reads are restarted after it.
class AlarmAfter {
 public:
  explicit AlarmAfter(milliseconds time) {
    _count = 0;
    struct sigaction action = {};
    action.sa_handler = [](int) { _count = _count + 1; };
    action.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &action, &before_);
    const itimerval timer = {{0, 0}, {0, static_cast<suseconds_t>(time.count() * 1000)}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }
  AlarmAfter(const AlarmAfter&) = delete;
  AlarmAfter& operator=(const AlarmAfter&) = delete;
  ~AlarmAfter() {
    const itimerval none = {};
    setitimer(ITIMER_REAL, &none, nullptr);
    sigaction(SIGALRM, &before_, nullptr);
  }

  int GetCount() const { return _count; }

 private:
  static inline volatile std::sig_atomic_t _count = 0;

  struct sigaction before_ = {};
};

// A tree with the command "row list", whose behaviour the test sets.
class DataValuesTest : public ::testing::Test {
 protected:
  void Register(SampleCommand::Work work) {
    command_ = MakeRowsCommand(std::move(work));
    RegisterAt(dispatcher_.GetRootNamespace(), {"row", "list"}, command_);
  }

  void RegisterRows(int count) {
    Register([count](const auto&, const auto& output) { output->SetRootObject(MakeRows(count)); });
  }

  std::vector<std::string> Read(const std::string& source, milliseconds time = milliseconds(5000)) {
    return Complete::ReadDataValues(dispatcher_, source, steady_clock::now() + time);
  }

  AutoCli::Dispatcher dispatcher_;
  std::shared_ptr<SampleCommand> command_;
};

TEST_F(DataValuesTest, ComeFromTheFieldOfEachRow) {
  RegisterRows(2);
  EXPECT_THAT(Read("row.list Name"), ElementsAre("row0", "row1"));
  EXPECT_THAT(Read("row.list Mount Point"), ElementsAre("/row0", "/row1"));
  EXPECT_THAT(Read("row.list Size"), ElementsAre("0", "1"));
  EXPECT_THAT(Read("row.list Tags"), ElementsAre("row01", "row02", "row11", "row12"));
}

TEST_F(DataValuesTest, ComeFromTheFieldOfASingleStructure) {
  Register([](const auto&, const auto& output) { output->SetRootObject(MakeRow("one", 1)); });
  command_->outputSpec->SetRootObject(MakeRow("", 0));
  EXPECT_THAT(Read("row.list Name"), ElementsAre("one"));
}

TEST_F(DataValuesTest, ComeFromManyRows) {
  RegisterRows(50000);
  EXPECT_THAT(Read("row.list Mount Point", milliseconds(60000)), SizeIs(50000));
}

TEST_F(DataValuesTest, AreEmptyWhenTheSourceIsWrong) {
  RegisterRows(2);
  for (const char* source : {"", " ", "row.list", "row.list ", "row.list Nosuch", "row Name",
                             "nosuch.list Name", "row.list.more Name", " Name", "..."}) {
    EXPECT_THAT(Read(source), IsEmpty()) << source;
  }
}

TEST_F(DataValuesTest, AreEmptyWhenTheCommandFails) {
  Register([](const auto&, const auto& output) {
    output->SetRootObject(MakeRows(2));
    output->AddErrorMessage("no fuel");
  });
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
}

TEST_F(DataValuesTest, AreEmptyWhenTheCommandThrowsOrEndsTheProcess) {
  Register([](const auto&, const auto&) { throw std::runtime_error("no fuel"); });
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
  command_->work = [](const auto&, const auto&) { throw 42; };
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
  command_->work = [](const auto&, const auto&) { _exit(0); };
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
  command_->work = [](const auto&, const auto&) { raise(SIGKILL); };
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
}

TEST_F(DataValuesTest, AreNeverThoseOfACommandThatChangesSomething) {
  const ScopedTempDir folder;
  const std::string file = folder.GetPath("changed");
  Register([file](const auto&, const auto& output) {
    std::ofstream(file) << "changed";
    output->SetRootObject(MakeRows(1));
  });
  command_->AddMetaData("changes", "true");
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
  EXPECT_NE(0, access(file.c_str(), F_OK));
  command_->AddMetaData("changes", "false");
  EXPECT_THAT(Read("row.list Name"), SizeIs(1));
  EXPECT_EQ(0, access(file.c_str(), F_OK));
}

TEST_F(DataValuesTest, AreEmptyWhenTheCommandNeedsAParameter) {
  RegisterRows(1);
  command_->inputSpec = InputSpec::New();
  command_->inputSpec->AddParameter(ParameterSpec::New("name", CallSpec::String));
  EXPECT_THAT(Read("row.list Name"), IsEmpty());
}

TEST_F(DataValuesTest, AreEmptyAtTheDeadlineAndTheProcessesAreKilled) {
  const ScopedTempDir folder;
  const std::string file = folder.GetPath("late");
  Register([file](const auto&, const auto& output) {
    const std::string line = "sleep 1; : >" + file;
    output->SetRootObject(MakeRows(std::system(line.c_str()) == 0 ? 1 : 0));
  });
  const auto start = steady_clock::now();
  EXPECT_THAT(Read("row.list Name", milliseconds(100)), IsEmpty());
  EXPECT_LT(steady_clock::now() - start, milliseconds(900));
  std::this_thread::sleep_for(milliseconds(1500));
  EXPECT_NE(0, access(file.c_str(), F_OK));
}

// A signal that has a handler interrupts the wait for data.
TEST_F(DataValuesTest, AreEmptyAtTheDeadlineEvenAfterASignal) {
  Register([](const auto&, const auto& output) {
    std::this_thread::sleep_for(milliseconds(10000));
    output->SetRootObject(MakeRows(1));
  });
  const AlarmAfter alarm(milliseconds(50));
  const auto start = steady_clock::now();
  EXPECT_THAT(Read("row.list Name", milliseconds(200)), IsEmpty());
  EXPECT_GE(steady_clock::now() - start, milliseconds(200));
  EXPECT_LT(steady_clock::now() - start, milliseconds(9000));
  EXPECT_EQ(1, alarm.GetCount());
}

TEST_F(DataValuesTest, ComeFromACommandThatRunsNothingFromTheCurrentFolder) {
  const ScopedTempDir folder;
  const ScopedEnvironment path("PATH", ".::bin:/usr/bin:/bin");
  Register([](const auto&, const auto& output) {
    const std::string here = std::getenv("PATH");
    std::vector<char> name(4096);
    const auto rows = MakeRows(0);
    rows->Add(MakeRow(here + " " + getcwd(name.data(), name.size()), 0));
    output->SetRootObject(rows);
  });
  EXPECT_THAT(Read("row.list Name"), ElementsAre("/usr/bin:/bin /"));
}

}  // namespace

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/isolation/IsolatedRun.h"

#include <gmock/gmock.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace Kestrel::Isolation {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kPatience(300);
constexpr milliseconds kLongPatience(1000);
constexpr int kMaxPatience = 15;  // factor by which a busy machine may be slower

milliseconds Since(Clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

void ComputeForever() {
  for (volatile unsigned i = 0;; i = i + 1) {
  }
}

void Compute(milliseconds processorTime) {
  const std::clock_t end =
      std::clock() + static_cast<std::clock_t>(processorTime.count() * CLOCKS_PER_SEC / 1000);
  while (std::clock() < end) {
  }
}

void SleepForever() {
  while (true) {
    pause();
  }
}

/// The outcome of work.
struct Outcome {
  std::string lines;
  bool isLate = false;
  milliseconds taken{0};
};

/// Runs work that may take `patience` for each line that it sends.
Outcome RunWork(milliseconds patience, const std::function<void(const Send&)>& work) {
  const Clock::time_point start = Clock::now();
  IsolatedRun run(work);
  Outcome outcome;
  while (const std::optional<std::string> line = run.ReadLine(patience)) {
    outcome.lines += *line + ";";
  }
  outcome.isLate = run.IsLate();
  run.Wait();
  outcome.taken = Since(start);
  return outcome;
}

void UseOneProcessor(int processor) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(processor, &set);
  sched_setaffinity(0, sizeof(set), &set);
}

/// Keeps a processor busy with work that has a higher priority than a thread that calls `UseRest`.
class BusyProcessor {
 public:
  BusyProcessor()
      : number_(sched_getcpu()), thread_([this] {
          UseOneProcessor(number_);
          while (!isEnding_) {
          }
        }) {}
  BusyProcessor(const BusyProcessor&) = delete;
  BusyProcessor& operator=(const BusyProcessor&) = delete;
  ~BusyProcessor() {
    isEnding_ = true;
    thread_.join();
  }

  /// From now on, this thread shares the processor and has the lowest priority, so it gets little
  /// processor time.
  void UseRest() const {
    UseOneProcessor(number_);
    setpriority(PRIO_PROCESS, 0, 19);
  }

 private:
  const int number_;
  std::atomic<bool> isEnding_ = false;
  std::thread thread_;
};

TEST(IsolatedRunTest, EndsAnEndlessLoop) {
  const Outcome outcome = RunWork(kPatience, [](const Send& send) {
    send("begins");
    ComputeForever();
  });
  EXPECT_EQ(outcome.lines, "begins;");
  EXPECT_TRUE(outcome.isLate);
  EXPECT_GE(outcome.taken, kPatience);
}

TEST(IsolatedRunTest, EndsWorkThatSleeps) {
  const Outcome outcome = RunWork(kPatience, [](const Send& send) {
    send("begins");
    SleepForever();
  });
  EXPECT_EQ(outcome.lines, "begins;");
  EXPECT_TRUE(outcome.isLate);
  EXPECT_GE(outcome.taken, kPatience);
}

TEST(IsolatedRunTest, EndsAnEndlessLoopInAThreadOrInAnotherProcess) {
  EXPECT_TRUE(RunWork(kPatience, [](const Send&) { std::thread(ComputeForever).join(); }).isLate);
  EXPECT_TRUE(RunWork(kPatience, [](const Send&) {
                if (fork() == 0) {
                  ComputeForever();
                }
                SleepForever();
              }).isLate);
}

TEST(IsolatedRunTest, MeasuresTheTimeOfEachLineSeparately) {
  const Outcome outcome = RunWork(kLongPatience, [](const Send& send) {
    for (int i = 0; i < 3; ++i) {
      Compute(kLongPatience / 2);
      send(std::to_string(i));
    }
  });
  EXPECT_EQ(outcome.lines, "0;1;2;");
  EXPECT_FALSE(outcome.isLate);
}

// The work takes longer than its limit, but only because it gets little processor time.
TEST(IsolatedRunTest, WaitsForWorkThatGetsLittleProcessorTime) {
  const BusyProcessor processor;
  const Outcome outcome = RunWork(kLongPatience, [&](const Send& send) {
    processor.UseRest();
    const Clock::time_point start = Clock::now();
    while (Since(start) < 2 * kLongPatience) {
    }
    send("done");
  });
  EXPECT_EQ(outcome.lines, "done;");
  EXPECT_FALSE(outcome.isLate);
}

TEST(IsolatedRunTest, WaitsForAProcessOfTheWorkThatGetsLittleProcessorTime) {
  const BusyProcessor processor;
  const Outcome outcome = RunWork(kLongPatience, [&](const Send& send) {
    if (fork() == 0) {
      processor.UseRest();
      const Clock::time_point start = Clock::now();
      while (Since(start) < 2 * kLongPatience) {
      }
      send("done");
      _exit(0);
    }
    SleepForever();
  });
  EXPECT_EQ(outcome.lines, "done;");
}

TEST(IsolatedRunTest, DoesNotWaitForeverForProcessorTime) {
  constexpr milliseconds kShortPatience(100);
  const BusyProcessor processor;
  const Outcome outcome = RunWork(kShortPatience, [&](const Send&) {
    processor.UseRest();
    ComputeForever();
  });
  EXPECT_TRUE(outcome.isLate);
  EXPECT_GT(outcome.taken, 5 * kShortPatience);
}

TEST(IsolatedRunTest, LeavesNoProcessBehind) {
  pid_t left = 0;
  {
    IsolatedRun run([](const Send& send) {
      if (fork() == 0) {
        setsid();
        send(std::to_string(getpid()));
        SleepForever();
      }
      ComputeForever();
    });
    const std::optional<std::string> line = run.ReadLine(kPatience * kMaxPatience);
    left = std::stoi(line.value_or("0"));
    EXPECT_FALSE(run.ReadLine(kPatience));
    EXPECT_TRUE(run.IsLate());
  }
  ASSERT_GT(left, 0);
  EXPECT_EQ(kill(left, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

}  // namespace
}  // namespace Kestrel::Isolation

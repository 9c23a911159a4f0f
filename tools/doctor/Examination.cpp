// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The child sends lines, each a JSON object with one key: the name of a member of Examination,
// "step" for what the child does next, "own" before the first step with the examined plug-in
// itself, or "end" after the last one.

#include "tools/doctor/Examination.h"

#include <sys/wait.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "tools/catalog/DescriptorPaths.h"
#include "tools/catalog/ReadTree.h"
#include "tools/isolation/IsolatedRun.h"
#include "tools/isolation/PluginFaults.h"
#include "vexil/NodePaths.h"
#include "vexil/Words.h"
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Doctor {

using AutoCli::Dispatcher;
using Isolation::IsolatedRun;
using nlohmann::json;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using Paths = std::vector<std::string>;

namespace {

// Sends the messages of the child, one per line.
class Reporter {
 public:
  explicit Reporter(const Isolation::Send& send) : send_(send) {}

  void Tell(const char* key, const json& value) const {
    send_(json{{key, value}}.dump(-1, ' ', false, json::error_handler_t::replace));
  }
  void Step(const std::string& step) const { Tell("step", step); }
  void Fault(State state, const std::string& reason) const {
    Tell("state", static_cast<int>(state));
    Tell("reasons", reason);
  }

 private:
  const Isolation::Send& send_;
};

bool IsSharedObject(const std::string& file) {
  return file.size() > 3 && file.compare(file.size() - 3, 3, ".so") == 0;
}

Paths ListCommands(const Dispatcher& dispatcher) {
  Paths paths;
  for (const Vexil::NodePath& node : Vexil::ListNodePaths(*dispatcher.GetRootNamespace())) {
    if (node.isCommand) {
      paths.push_back(Vexil::JoinWords(node.words, " "));
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

void LoadQuietly(Dispatcher& dispatcher, const std::string& file) {
  try {
    dispatcher.AddPlugin(file);
  } catch (...) {  // NOLINT(bugprone-empty-catch): its own examination reports it
  }
}

// Returns a dispatcher that has loaded the plug-ins `before`. It is never destroyed: the process
// ends with all plug-ins loaded.
Dispatcher& NewDispatcher(const Paths& before, const Reporter& reporter) {
  auto* const dispatcher = new Dispatcher;
  dispatcher->RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  for (const std::string& other : before) {
    reporter.Step("loading " + other + ", which is before it");
    LoadQuietly(*dispatcher, other);
  }
  reporter.Tell("own", true);
  return *dispatcher;
}

void LoadAndReport(Dispatcher& dispatcher, const std::string& file, const Reporter& reporter) {
  const Clock::time_point start = Clock::now();
  try {
    dispatcher.AddPlugin(file);
  } catch (const KestrelException& error) {
    reporter.Fault(State::Refused, error.what());
  } catch (...) {
    reporter.Fault(State::Threw, "it throws " + *Isolation::DescribeForeignException());
  }
  const auto taken = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
  reporter.Tell("milliseconds", taken.count());
}

Paths Without(const Paths& known, const Paths& all) {
  Paths added;
  std::set_difference(all.begin(), all.end(), known.begin(), known.end(),
                      std::back_inserter(added));
  return added;
}

void ExamineInChild(const std::string& file, const Paths& before, const Reporter& reporter) {
  Dispatcher& dispatcher = NewDispatcher(before, reporter);
  const Paths known = ListCommands(dispatcher);
  reporter.Step("loading it");
  LoadAndReport(dispatcher, file, reporter);
  const Paths added = Without(known, ListCommands(dispatcher));
  reporter.Tell("commands", added);
  reporter.Step("reading what it declares");
  for (const Catalog::Fault& fault : Catalog::ReadTree(dispatcher).faults) {
    if (std::binary_search(added.begin(), added.end(), fault.path)) {
      reporter.Fault(State::Faulty,
                     "the declaration of '" + fault.path + "' throws: " + fault.text);
    }
  }
  reporter.Tell("end", true);
}

void FindSymbolsInChild(const std::string& file, const Paths& before, const Reporter& reporter) {
  NewDispatcher(before, reporter);
  reporter.Step("binding its functions");
  if (const std::optional<std::string> missing = Isolation::FindMissingSymbol(file)) {
    reporter.Fault(State::Faulty, "a function that it calls is missing: " + *missing);
  }
  reporter.Tell("end", true);
}

void ListInChild(const std::string& file, const Reporter& reporter) {
  Dispatcher& dispatcher = NewDispatcher({}, reporter);
  const Paths known = ListCommands(dispatcher);
  reporter.Step("loading it alone");
  if (IsSharedObject(file)) {
    LoadQuietly(dispatcher, file);
    reporter.Tell("commands", Without(known, ListCommands(dispatcher)));
  } else {
    reporter.Tell("commands", Catalog::ReadDescriptorPaths(file).commands);
  }
  reporter.Tell("end", true);
}

/// Reads the messages of a child until it ends.
class Listener {
 public:
  Listener(IsolatedRun& run, milliseconds patience) : run_(run), patience_(patience) {}

  Examination Run() {
    while (const std::optional<std::string> line = run_.ReadLine(TimeLeft())) {
      Take(json::parse(*line, nullptr, false));
    }
    const bool isLate = run_.IsLate();
    const int status = run_.Wait();
    if (isLate || run_.IsLate()) {
      Fault(State::Hung,
            "it takes more than " + std::to_string(patience_.count()) + " ms for " + step_);
      result_.milliseconds = std::max<long>(result_.milliseconds, patience_.count());
    } else if (!isComplete_) {
      Fault(WIFSIGNALED(status) ? State::Crashed : State::Ended,
            Isolation::DescribeEnd(status) + " while " + step_);
    }
    return std::move(result_);
  }

 private:
  // Each of the plug-ins that are loaded before this one has the same time limit.
  milliseconds TimeLeft() const { return isOwn_ ? start_ + patience_ - run_.GetTime() : patience_; }

  // A message may be invalid, because this plug-in, or one before it, may have written to the pipe.
  void Take(const json& message) {
    if (!Read(message) && isOwn_ && !isDisturbed_) {
      isDisturbed_ = true;
      Fault(State::Faulty, "it writes to a file descriptor that is not its own");
    }
  }

  // Returns whether the message is valid.
  bool Read(const json& message) {
    try {
      return message.is_object() && message.size() == 1 &&
             Read(message.begin().key(), message.begin().value());
    } catch (const json::exception&) {  // the value is of another kind
      return false;
    }
  }

  bool Read(const std::string& key, const json& value) {
    if (key == "step") {
      step_ = value.get<std::string>();
    } else if (key == "own") {
      isOwn_ = true;
      start_ = run_.GetTime();
    } else if (key == "state") {
      return ReadState(value);
    } else if (key == "reasons") {
      result_.reasons.push_back(value.get<std::string>());
    } else if (key == "commands") {
      result_.commands = value.get<Paths>();
    } else if (key == "milliseconds") {
      result_.milliseconds = value.get_ref<const json::number_integer_t&>();
    } else if (key == "end") {
      isComplete_ = true;
    } else {
      return false;
    }
    return true;
  }

  bool ReadState(const json& value) {
    const auto number = value.get_ref<const json::number_unsigned_t&>();
    if (number > static_cast<unsigned>(State::Hung)) {
      return false;
    }
    result_.state = std::max(result_.state, static_cast<State>(number));
    return true;
  }

  void Fault(State state, const std::string& reason) {
    result_.state = std::max(result_.state, state);
    result_.reasons.push_back(reason);
  }

  IsolatedRun& run_;
  const milliseconds patience_;
  bool isOwn_ = false;
  milliseconds start_{0};
  std::string step_ = "starting";
  bool isComplete_ = false;
  bool isDisturbed_ = false;
  Examination result_;
};

Examination RunChild(const std::function<void(const Reporter&)>& work, milliseconds patience) {
  IsolatedRun run([&work](const Isolation::Send& send) { work(Reporter(send)); });
  return Listener(run, patience).Run();
}

}  // namespace

const char* WordOf(State state) {
  constexpr const char* kWords[] = {"loaded",  "faulty", "refused", "threw",
                                    "crashed", "ended",  "hung"};
  return kWords[static_cast<int>(state)];
}

Examination Examine(const std::string& file, const Paths& before, milliseconds patience) {
  Examination result =
      RunChild([&](const Reporter& reporter) { ExamineInChild(file, before, reporter); }, patience);
  if (IsSharedObject(file) && result.state <= State::Faulty) {
    const Examination symbols = RunChild(
        [&](const Reporter& reporter) { FindSymbolsInChild(file, before, reporter); }, patience);
    result.state = std::max(result.state, symbols.state);
    result.reasons.insert(result.reasons.end(), symbols.reasons.begin(), symbols.reasons.end());
  }
  return result;
}

Paths ListDeclaredCommands(const std::string& file, milliseconds patience) {
  return RunChild([&](const Reporter& reporter) { ListInChild(file, reporter); }, patience)
      .commands;
}

Paths ListBuiltInCommands() { return ListCommands(Dispatcher()); }

}  // namespace Kestrel::Doctor

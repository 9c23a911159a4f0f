// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The child writes one JSON value on each line: {"enter": WHAT} before each step, {"fault": ...},
// and {"end": ...} at the end. So if the child ends early, its parent knows what was being
// examined.

#include "tools/lint/SharedObject.h"

#include <sys/wait.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "tools/catalog/CatalogJson.h"
#include "tools/isolation/IsolatedRun.h"
#include "tools/lint/ObjectExaminer.h"

namespace Kestrel::Lint {

using nlohmann::json;

namespace {

void Send(const Isolation::Send& send, const json& value) {
  send(value.dump(-1, ' ', false, json::error_handler_t::replace));
}

void RunChild(const Isolation::Send& send, const std::string& file,
              const std::vector<std::string>& before) {
  ObjectExaminer examiner(
      [&send](const std::string& what) {
        Send(send, {{"enter", what}});
      },
      [&send](const ObjectFault& fault) {
        Send(send, {{"fault", json::array({fault.rule, fault.what, fault.advice})}});
      });
  try {
    const ObjectReport report = examiner.Run(file, before);
    Send(send,
         {{"end", {{"tree", Catalog::WriteJson(report.tree)}, {"formatters", report.formatters}}}});
  } catch (...) {
    Send(send, {{"fault", json::array({"object-exception",
                                       "it throws something that is not a KestrelException",
                                       "throw KestrelException"})}});
    throw;
  }
}

/// Reads the lines of a child into a report. `isComplete` is true once it has read the line "end".
class Listener {
 public:
  explicit Listener(ObjectReport& report) : report_(report) {}

  void Take(const std::string& line) {
    try {
      Read(json::parse(line));
    } catch (const std::exception&) {  // the plug-in has written into the pipe
      isGarbled = true;
    }
  }

  std::string step;
  bool isComplete = false;
  bool isGarbled = false;

 private:
  void Read(const json& value) {
    if (value.contains("enter")) {
      step = value.at("enter").get<std::string>();
    } else if (value.contains("fault")) {
      const auto text = [&value](std::size_t i) {
        return value.at("fault").at(i).get<std::string>();
      };
      report_.faults.push_back({text(0), text(1), text(2)});
    } else {
      const json& end = value.at("end");
      report_.tree = Catalog::ReadJson(end.at("tree").get<std::string>());
      report_.formatters = end.at("formatters").get<std::vector<std::string>>();
      isComplete = true;
    }
  }

  ObjectReport& report_;
};

// Whether a fault that has been reported explains the exit status: if a process calls an undefined
// function, the dynamic loader ends it with the status 127.
bool IsExplained(int status, const ObjectReport& report) {
  const auto isSymbol = [](const ObjectFault& fault) { return fault.rule == "object-symbol"; };
  return WIFEXITED(status) && WEXITSTATUS(status) == 127 &&
         std::any_of(report.faults.begin(), report.faults.end(), isSymbol);
}

}  // namespace

ObjectReport ExamineSharedObject(const std::string& file, const std::vector<std::string>& before,
                                 std::chrono::milliseconds patience) {
  ObjectReport report;
  Listener listener(report);
  Isolation::IsolatedRun child([&](const Isolation::Send& send) { RunChild(send, file, before); });
  while (const std::optional<std::string> line = child.ReadLine(patience)) {
    listener.Take(*line);
  }
  const int status = child.Wait();
  if (child.IsLate()) {
    report.faults.push_back({"object-hang",
                             "it makes no progress for " + std::to_string(patience.count()) +
                                 " ms at: " + listener.step,
                             "end every loop and wait"});
  } else if (listener.isGarbled) {
    report.faults.push_back(
        {"object-crash", "it writes to file descriptors that are not its own, at: " + listener.step,
         "write only to what the plug-in has opened"});
  } else if (!listener.isComplete && !IsExplained(status, report)) {
    report.faults.push_back({"object-crash",
                             Isolation::DescribeEnd(status) + " at: " + listener.step,
                             "run the tool with the plug-in in a debugger"});
  }
  return report;
}

}  // namespace Kestrel::Lint

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceLog.h"

#include <chrono>
#include <optional>
#include <string_view>

#include "plugins/host/frame/ChildProcess.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/service/Systemctl.h"

namespace Kestrel::Host {
namespace {

constexpr std::chrono::seconds kLimit{10};
// The number of lines that systemctl shows with the status of a unit.
constexpr char kLines[] = "--lines=10";
constexpr std::size_t kClockEnd = sizeof("2026-11-22T10:00:00") - 1;
constexpr std::size_t kOffsetSize = sizeof("+0000") - 1;

// Whether a line is a remark of journalctl: "-- No entries --", "-- Boot 1234 --".
bool IsRemark(std::string_view line) { return StartsWith(line, "-- "); }

// Converts "2026-11-22T10:00:00+0000 text" to "2026-11-22 10:00:00 text". Further lines of the same
// entry begin with spaces and are returned unchanged.
std::string WithPlainTime(std::string_view line) {
  if (line.size() < kClockEnd + kOffsetSize || line[10] != 'T' || line[kClockEnd - 3] != ':') {
    return std::string(line);
  }
  std::string text(line);
  text[10] = ' ';
  return text.erase(kClockEnd, kOffsetSize);
}

// journalctl also succeeds if it may read only a part; it then prints a hint about the rest.
std::string FindProblem(const ProgramResult& result) {
  const std::string_view words = result.errorOutput;
  for (const std::string_view hint : {"not seeing messages", "insufficient permissions"}) {
    if (words.find(hint) != std::string_view::npos) {
      return "only root and members of the group systemd-journal may read the whole journal";
    }
  }
  if (words.find("No journal files were found") != std::string_view::npos) {
    return "there is no journal";
  }
  return result.status == 0 ? std::string() : "journalctl failed: " + FailureWords(result);
}

}  // namespace

ServiceLog ReadServiceLog(const std::string& unit) {
  const std::optional<std::string> program = FindProgram("journalctl");
  if (!program) {
    return {{}, "the program journalctl is not in PATH"};
  }
  const ProgramResult result = RunProgramWithin(
      kLimit, *program,
      {"--no-pager", "--no-hostname", "--output=short-iso", kLines, "--unit=" + unit});
  ServiceLog log;
  log.problem = FindProblem(result);
  for (const std::string_view line : SplitLines(result.output)) {
    if (!IsRemark(line)) {
      log.lines.push_back(WithPlainTime(line));
    }
  }
  return log;
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/SystemStatistics.h"

#include <kestrel/KestrelException.h>

#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

[[noreturn]] void ThrowUnknownForm(const std::string& path) {
  throw KestrelException("Unable to understand " + path);
}

long NumberOrThrow(std::string_view text, const std::string& path) {
  const auto number = ParseNumber(text);
  if (!number) {
    ThrowUnknownForm(path);
  }
  return *number;
}

std::string_view BeforePoint(std::string_view text) { return text.substr(0, text.find('.')); }

// Returns the number in a line such as "MemFree:   512 kB", or `fallback` if there is no such line
// or number.
long Figure(std::string_view text, std::string_view name, long fallback) {
  for (const std::string_view line : SplitLines(text)) {
    if (StartsWith(line, name) && line.size() > name.size() && line[name.size()] == ':') {
      const auto words = SplitWords(line.substr(name.size() + 1));
      return words.empty() ? fallback : ParseNumber(words[0]).value_or(fallback);
    }
  }
  return fallback;
}

}  // namespace

long Memory::GetUsed() const { return ClampedDifference(total, available); }

long Memory::GetSwapUsed() const { return ClampedDifference(swapTotal, swapFree); }

Uptime ReadUptime(const std::string& proc) {
  const std::string path = proc + "/uptime";
  const std::string text = ReadRequiredFile(path);
  const auto words = SplitWords(text);
  if (words.size() < 2) {
    ThrowUnknownForm(path);
  }
  Uptime uptime;
  uptime.seconds = NumberOrThrow(BeforePoint(words[0]), path);
  uptime.idleSeconds = NumberOrThrow(BeforePoint(words[1]), path);
  return uptime;
}

Load ReadLoad(const std::string& proc) {
  const std::string path = proc + "/loadavg";
  const std::string text = ReadRequiredFile(path);
  const auto words = SplitWords(text);
  if (words.size() < 4) {
    ThrowUnknownForm(path);
  }
  const auto tasks = Split(words[3], '/');
  if (tasks.size() != 2) {
    ThrowUnknownForm(path);
  }
  Load load;
  load.oneMinute = words[0];
  load.fiveMinutes = words[1];
  load.fifteenMinutes = words[2];
  load.running = NumberOrThrow(tasks[0], path);
  load.tasks = NumberOrThrow(tasks[1], path);
  return load;
}

Memory ReadMemory(const std::string& proc) {
  const std::string path = proc + "/meminfo";
  const std::string text = ReadRequiredFile(path);
  Memory memory;
  memory.total = Figure(text, "MemTotal", -1);
  memory.free = Figure(text, "MemFree", -1);
  if (memory.total < 0 || memory.free < 0) {
    ThrowUnknownForm(path);
  }
  // Kernels before 3.14 do not report what is available.
  memory.available = Figure(text, "MemAvailable", memory.free);
  memory.shared = Figure(text, "Shmem", 0);
  memory.buffers = Figure(text, "Buffers", 0);
  memory.cached = ClampedSum(Figure(text, "Cached", 0), Figure(text, "SReclaimable", 0));
  memory.swapTotal = Figure(text, "SwapTotal", 0);
  memory.swapFree = Figure(text, "SwapFree", 0);
  return memory;
}

long ReadStartTime(const std::string& proc) {
  const std::string path = proc + "/stat";
  const std::string text = ReadRequiredFile(path);
  for (const std::string_view line : SplitLines(text)) {
    const auto words = SplitWords(line);
    if (words.size() == 2 && words[0] == "btime") {
      return NumberOrThrow(words[1], path);
    }
  }
  ThrowUnknownForm(path);
}

}  // namespace Kestrel::Host

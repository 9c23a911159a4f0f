// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/SystemStatistics.h"

#include <kestrel/KestrelException.h>

#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/Hundredths.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr long kHundredthsPerSecond = 100;
constexpr long kBytesPerKib = 1024;

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

long HundredthsOrThrow(std::string_view text, const std::string& path) {
  const auto hundredths = ParseHundredths(text);
  if (!hundredths) {
    ThrowUnknownForm(path);
  }
  return *hundredths;
}

// Returns the number of bytes that a line such as "MemFree:   512 kB" states, or `fallback` if
// there is no such line or number.
long Figure(std::string_view text, std::string_view name, long fallback) {
  for (const std::string_view line : SplitLines(text)) {
    if (StartsWith(line, name) && line.size() > name.size() && line[name.size()] == ':') {
      const auto words = SplitWords(line.substr(name.size() + 1));
      const auto kibibytes = words.empty() ? std::nullopt : ParseNumber(words[0]);
      return kibibytes ? ClampedProduct(*kibibytes, kBytesPerKib) : fallback;
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
  uptime.hundredths = HundredthsOrThrow(words[0], path);
  uptime.seconds = uptime.hundredths / kHundredthsPerSecond;
  uptime.idleSeconds = HundredthsOrThrow(words[1], path) / kHundredthsPerSecond;
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
  load.oneMinute = HundredthsOrThrow(words[0], path);
  load.fiveMinutes = HundredthsOrThrow(words[1], path);
  load.fifteenMinutes = HundredthsOrThrow(words[2], path);
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
  // Kernels before 3.14 do not report the available memory. The free memory is used instead.
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

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/CpuUsage.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::string_view kPrefix = "cpu";
constexpr long double kWhole = 10000;  // hundredths of a percent

// The columns of a line after the name. Kernels before 2.6.24 have fewer.
constexpr long CpuTimes::*const kColumns[] = {
    &CpuTimes::user,          &CpuTimes::nice,      &CpuTimes::system,
    &CpuTimes::idle,          &CpuTimes::inputWait, &CpuTimes::interrupt,
    &CpuTimes::softInterrupt, &CpuTimes::steal,     &CpuTimes::guest};
constexpr std::size_t kFewestColumns = 4;
constexpr std::size_t kColumnCount = sizeof(kColumns) / sizeof(kColumns[0]);

// Returns 12 for "cpu12", and -1 for "cpu", the sum of all processors.
std::optional<long> ParseName(std::string_view name) {
  if (name == kPrefix) {
    return -1;
  }
  const auto number = ParseNumber(name.substr(kPrefix.size()));
  return number && *number >= 0 ? number : std::nullopt;
}

std::optional<CpuTimes> ParseTimes(std::string_view line) {
  const auto words = SplitWords(line);
  const auto number = ParseName(words[0]);
  if (!number || words.size() < 1 + kFewestColumns) {
    return std::nullopt;
  }
  CpuTimes times;
  times.number = *number;
  for (std::size_t i = 0; i < kColumnCount && i + 1 < words.size(); ++i) {
    const auto ticks = ParseNumber(words[i + 1]);
    if (!ticks || *ticks < 0) {
      return std::nullopt;
    }
    times.*kColumns[i] = *ticks;
  }
  return times;
}

// Returns the time that passed between two samples. A time that the kernel has lowered counts as 0.
CpuTimes Difference(const CpuTimes& before, const CpuTimes& after) {
  CpuTimes passed;
  for (const auto column : kColumns) {
    passed.*column = std::max(after.*column - before.*column, 0L);
  }
  return passed;
}

long Share(long double part, long double total) { return std::lround(kWhole * part / total); }

CpuUsage ToUsage(const CpuTimes& passed) {
  const long double idle = static_cast<long double>(passed.idle) + passed.inputWait;
  const long double busy = static_cast<long double>(passed.user) + passed.nice + passed.system +
                           passed.interrupt + passed.softInterrupt + passed.steal;
  const long double total = idle + busy;
  CpuUsage usage;
  if (total == 0) {
    return usage;
  }
  usage.busy = Share(busy, total);
  usage.user = Share(passed.user, total);
  usage.nice = Share(passed.nice, total);
  usage.system = Share(passed.system, total);
  usage.idle = Share(passed.idle, total);
  usage.inputWait = Share(passed.inputWait, total);
  usage.interrupt = Share(passed.interrupt, total);
  usage.softInterrupt = Share(passed.softInterrupt, total);
  usage.steal = Share(passed.steal, total);
  usage.guest = Share(std::min(passed.guest, passed.user), total);
  return usage;
}

}  // namespace

std::vector<CpuTimes> ReadCpuTimes(const std::string& proc) {
  const std::string path = proc + "/stat";
  const std::string text = ReadRequiredFile(path);
  std::vector<CpuTimes> cpus;
  for (const std::string_view line : SplitLines(text)) {
    if (!StartsWith(line, kPrefix)) {
      continue;
    }
    const auto times = ParseTimes(line);
    if (!times) {
      throw KestrelException("Unable to understand " + path);
    }
    cpus.push_back(*times);
  }
  if (cpus.empty()) {
    throw KestrelException("Unable to find any processor in " + path);
  }
  return cpus;
}

std::vector<CpuUsage> CompareCpuTimes(const std::vector<CpuTimes>& before,
                                      const std::vector<CpuTimes>& after) {
  std::vector<CpuUsage> usages;
  usages.reserve(after.size());
  for (const CpuTimes& last : after) {
    const auto first = std::find_if(before.begin(), before.end(), [&last](const CpuTimes& each) {
      return each.number == last.number;
    });
    usages.push_back(first == before.end() ? CpuUsage() : ToUsage(Difference(*first, last)));
    usages.back().number = last.number;
  }
  return usages;
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/DiskCounters.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// The unit in which the kernel counts data, regardless of the device's sector size.
constexpr long kSectorSize = 512;

// MAJOR MINOR NAME and 11 numbers; newer kernels add four about discards and two about flushes.
constexpr std::size_t kFirstNumber = 3;
constexpr std::size_t kMinNumbers = 11;

std::optional<std::vector<long>> ParseNumbers(const std::vector<std::string_view>& words) {
  std::vector<long> numbers;
  for (std::size_t index = kFirstNumber; index < words.size(); ++index) {
    const auto number = ParseNumber(words[index]);
    if (!number) {
      return std::nullopt;
    }
    numbers.push_back(*number);
  }
  if (numbers.size() < kMinNumbers) {
    return std::nullopt;
  }
  constexpr std::size_t kMaxNumbers = 17;
  numbers.resize(std::max(numbers.size(), kMaxNumbers));
  return numbers;
}

TransferCounters ToTransfer(const std::vector<long>& numbers, std::size_t first) {
  return {numbers[first], numbers[first + 1], ClampedProduct(numbers[first + 2], kSectorSize),
          numbers[first + 3]};
}

std::optional<DiskCounters> ParseLine(std::string_view line) {
  const std::vector<std::string_view> words = SplitWords(line);
  const auto numbers = ParseNumbers(words);
  if (!numbers) {
    return std::nullopt;
  }
  DiskCounters counters;
  counters.name = words[2];
  // A "!" in /proc represents a "/" in the name.
  std::replace(counters.name.begin(), counters.name.end(), '!', '/');
  counters.reads = ToTransfer(*numbers, 0);
  counters.writes = ToTransfer(*numbers, 4);
  counters.inProgress = (*numbers)[8];
  counters.busyMilliseconds = (*numbers)[9];
  counters.queuedMilliseconds = (*numbers)[10];
  counters.discards = ToTransfer(*numbers, 11);
  counters.flushes = (*numbers)[15];
  counters.flushMilliseconds = (*numbers)[16];
  return counters;
}

long Difference(long first, long second) { return second < first ? second : second - first; }

TransferCounters Difference(const TransferCounters& first, const TransferCounters& second) {
  return {Difference(first.count, second.count), Difference(first.merged, second.merged),
          Difference(first.bytes, second.bytes),
          Difference(first.milliseconds, second.milliseconds)};
}

DiskCounters Difference(const DiskCounters& first, const DiskCounters& second) {
  DiskCounters counters;
  counters.name = second.name;
  counters.reads = Difference(first.reads, second.reads);
  counters.writes = Difference(first.writes, second.writes);
  counters.discards = Difference(first.discards, second.discards);
  counters.flushes = Difference(first.flushes, second.flushes);
  counters.flushMilliseconds = Difference(first.flushMilliseconds, second.flushMilliseconds);
  counters.inProgress = second.inProgress;
  counters.busyMilliseconds = Difference(first.busyMilliseconds, second.busyMilliseconds);
  counters.queuedMilliseconds = Difference(first.queuedMilliseconds, second.queuedMilliseconds);
  return counters;
}

}  // namespace

bool DiskCounters::IsUnused() const {
  return reads.count == 0 && writes.count == 0 && discards.count == 0 && flushes == 0 &&
         inProgress == 0;
}

std::vector<DiskCounters> ReadDiskCounters(const std::string& path) {
  const std::string text = ReadRequiredFile(path);
  std::vector<DiskCounters> devices;
  for (const std::string_view line : SplitLines(text)) {
    const auto counters = ParseLine(line);
    if (!counters) {
      throw KestrelException("Unable to read " + path +
                             ": not the counters of a device: " + SanitizedText(line)->GetValue());
    }
    devices.push_back(*counters);
  }
  return devices;
}

std::vector<DiskCounters> CountedBetween(const std::vector<DiskCounters>& first,
                                         const std::vector<DiskCounters>& second) {
  std::unordered_map<std::string, const DiskCounters*> before;
  for (const DiskCounters& counters : first) {
    before.emplace(counters.name, &counters);
  }
  std::vector<DiskCounters> counted;
  for (const DiskCounters& counters : second) {
    const auto found = before.find(counters.name);
    counted.push_back(
        Difference(found == before.end() ? DiskCounters() : *found->second, counters));
  }
  return counted;
}

}  // namespace Kestrel::Host

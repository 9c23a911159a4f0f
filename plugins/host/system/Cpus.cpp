// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Cpus.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <map>
#include <string_view>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

using CpuTexts = std::map<std::string_view, std::string_view>;

// Each online processor has a paragraph of "name : value" lines.
std::map<long, CpuTexts> ParseCpuInfo(std::string_view text) {
  std::map<long, CpuTexts> cpus;
  CpuTexts* current = nullptr;
  for (const std::string_view line : SplitLines(text)) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
      continue;
    }
    const std::string_view name = Trim(line.substr(0, colon));
    const std::string_view value = Trim(line.substr(colon + 1));
    if (name == "processor") {
      const auto number = ParseNumber(value);
      current = number ? &cpus[*number] : nullptr;
    } else if (current != nullptr) {
      (*current)[name] = value;
    }
  }
  return cpus;
}

std::string TextOf(const CpuTexts& texts, std::string_view name) {
  const auto found = texts.find(name);
  return found == texts.end() ? std::string() : std::string(found->second);
}

long NumberIn(const std::string& path) {
  const auto text = ReadOptionalFile(path);
  return text ? ParseNumber(*text).value_or(-1) : -1;
}

std::vector<long> NumbersIn(const std::string& path) {
  const auto text = ReadOptionalFile(path);
  return text ? ParseNumberList(*text) : std::vector<long>();
}

bool Contains(const std::vector<long>& numbers, long number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

// Converts a frequency in MHz, such as "2596.146", to kHz. Returns -1 for anything else.
long ParseMegahertz(const std::string& text) {
  if (text.empty()) {
    return -1;
  }
  const std::size_t point = text.find('.');
  std::string digits = point == std::string::npos ? std::string() : text.substr(point + 1);
  digits.resize(3, '0');
  return ParseNumber(text.substr(0, point) + digits).value_or(-1);
}

// Returns the number of a processor's memory node; -1 if it is unknown. For node 3, the folder of
// the processor contains a link named "node3".
long ReadNode(const std::string& folder) {
  constexpr std::string_view kPrefix = "node";
  for (const std::string& name : ListOptionalFolder(folder).value_or(std::vector<std::string>())) {
    if (name.compare(0, kPrefix.size(), kPrefix) == 0) {
      const auto node = ParseNumber(std::string_view(name).substr(kPrefix.size()));
      if (node) {
        return *node;
      }
    }
  }
  return -1;
}

void FillTopology(Cpu& cpu, const std::string& folder) {
  cpu.node = ReadNode(folder);
  cpu.socket = NumberIn(folder + "/topology/physical_package_id");
  cpu.core = NumberIn(folder + "/topology/core_id");
  cpu.siblings = NumbersIn(folder + "/topology/thread_siblings_list");
}

void FillTexts(Cpu& cpu, const CpuTexts& texts) {
  cpu.vendor = TextOf(texts, "vendor_id");
  cpu.model = TextOf(texts, "model name");
  cpu.kilohertz = ParseMegahertz(TextOf(texts, "cpu MHz"));
}

}  // namespace

std::vector<Cpu> ReadCpus(const std::string& proc, const std::string& sys) {
  const std::string folder = sys + "/devices/system/cpu";
  const std::string text = ReadOptionalFile(proc + "/cpuinfo").value_or(std::string());
  const auto texts = ParseCpuInfo(text);
  std::vector<long> present = NumbersIn(folder + "/present");
  std::vector<long> online = NumbersIn(folder + "/online");
  if (present.empty()) {
    for (const auto& [number, unused] : texts) {
      present.push_back(number);
    }
    online = present;
  }
  if (present.empty()) {
    throw KestrelException("Unable to find any processor in " + folder + " and " + proc +
                           "/cpuinfo");
  }
  std::vector<Cpu> cpus;
  for (const long number : present) {
    Cpu cpu;
    cpu.number = number;
    cpu.isOnline = Contains(online, number);
    FillTopology(cpu, folder + "/cpu" + std::to_string(number));
    const auto found = texts.find(number);
    if (found != texts.end()) {
      FillTexts(cpu, found->second);
    }
    cpus.push_back(std::move(cpu));
  }
  return cpus;
}

}  // namespace Kestrel::Host

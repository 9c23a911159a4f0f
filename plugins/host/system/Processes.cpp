// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Processes.h"

#include <kestrel/KestrelException.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// Indexes of the words after the name.
enum StatWord : std::size_t {
  kState = 0,
  kParent = 1,
  kTerminal = 4,
  kFlags = 6,
  kUserTicks = 11,
  kSystemTicks = 12,
  kNice = 16,
  kThreads = 17,
  kStart = 19,
  kVirtualBytes = 20,
  kResidentPages = 21,
  kWordCount = 22
};

constexpr long kKernelThreadFlag = 0x00200000;
constexpr long kBytesPerKib = 1024;
constexpr long kWhole = 10000;  // in hundredths of a percent

struct LetterName {
  char letter;
  const char* word;
};

constexpr LetterName kStates[] = {
    {'R', "running"}, {'S', "sleeping"}, {'D', "waiting"}, {'T', "stopped"}, {'t', "traced"},
    {'Z', "zombie"},  {'I', "idle"},     {'P', "parked"},  {'X', "dead"},
};

// Pseudo-terminals have eight major numbers with 256 minor numbers each. /sys does not list them.
constexpr unsigned kFirstPtsMajor = 136;
constexpr unsigned kLastPtsMajor = 143;
constexpr unsigned kPtsPerMajor = 256;

long NumberAt(const std::vector<std::string_view>& words, std::size_t index) {
  return ParseNumber(words[index]).value_or(0);
}

void FillNumbers(Process& process, const std::vector<std::string_view>& words) {
  static const long pageSize = ::sysconf(_SC_PAGESIZE);
  process.terminal = NumberAt(words, kTerminal);
  process.isKernelThread = (NumberAt(words, kFlags) & kKernelThreadFlag) != 0;
  process.processorTicks = ClampedSum(NumberAt(words, kUserTicks), NumberAt(words, kSystemTicks));
  process.nice = NumberAt(words, kNice);
  process.threads = NumberAt(words, kThreads);
  process.startTicks = NumberAt(words, kStart);
  process.virtualMemory = NumberAt(words, kVirtualBytes);
  process.residentMemory = ClampedProduct(NumberAt(words, kResidentPages), pageSize);
}

// Reads the file "status": the effective user, which is the second number after "Uid:", and the
// resident memory, which is more recent there than in "stat". Returns false if there is no user.
bool FillStatus(Process& process, std::string_view status) {
  bool hasUser = false;
  for (const std::string_view line : SplitLines(status)) {
    const auto words = SplitWords(line);
    if (words.size() < 3) {
      continue;
    }
    const auto user = words[0] == "Uid:" ? ParseNumber(words[2]) : std::nullopt;
    if (user) {
      process.user = static_cast<uid_t>(*user);
      hasUser = true;
    } else if (words[0] == "VmRSS:") {
      const auto kibibytes = ParseNumber(words[1]);
      process.residentMemory =
          kibibytes ? ClampedProduct(*kibibytes, kBytesPerKib) : process.residentMemory;
    }
  }
  return hasUser;
}

// Each argument ends in a NUL. A process that overwrites its arguments may leave more NULs at the
// end.
std::string JoinArguments(std::string arguments) {
  const std::size_t last = arguments.find_last_not_of('\0');
  arguments.resize(last == std::string::npos ? 0 : last + 1);
  std::replace(arguments.begin(), arguments.end(), '\0', ' ');
  return arguments;
}

}  // namespace

std::optional<Process> ParseProcess(std::string_view stat) {
  const std::size_t open = stat.find('(');
  const std::size_t close = stat.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
    return std::nullopt;
  }
  const auto id = ParseNumber(stat.substr(0, open));
  const auto words = SplitWords(stat.substr(close + 1));
  if (!id || words.size() < kWordCount || words[kState].size() != 1) {
    return std::nullopt;
  }
  Process process;
  process.id = *id;
  process.name = stat.substr(open + 1, close - open - 1);
  process.state = words[kState][0];
  process.parentId = NumberAt(words, kParent);
  FillNumbers(process, words);
  return process;
}

std::optional<Process> ReadProcess(const std::string& proc, long id) {
  const std::string folder = proc + "/" + std::to_string(id);
  const auto stat = ReadOptionalFile(folder + "/stat");
  const auto status = ReadOptionalFile(folder + "/status");
  auto arguments = ReadOptionalFile(folder + "/cmdline");
  if (!stat || !status || !arguments) {
    return std::nullopt;
  }
  auto process = ParseProcess(*stat);
  if (!process || !FillStatus(*process, *status)) {
    throw KestrelException("Unable to understand the files in " + folder);
  }
  process->command = JoinArguments(std::move(*arguments));
  return process;
}

std::vector<Process> ReadProcesses(const std::string& proc) {
  std::vector<Process> processes;
  for (const std::string& name : ListRequiredFolder(proc)) {
    const auto id = ParseNumber(name);
    if (!id) {
      continue;
    }
    auto process = ReadProcess(proc, *id);
    if (process) {
      processes.push_back(std::move(*process));
    }
  }
  if (processes.empty()) {
    throw KestrelException("Unable to find any process in " + proc);
  }
  std::sort(processes.begin(), processes.end(),
            [](const Process& left, const Process& right) { return left.id < right.id; });
  return processes;
}

bool HidesProcesses(const std::string& proc) {
  return ::access((proc + "/1").c_str(), F_OK) != 0 && IsAbsence(errno);
}

long ProcessorShare(long usedTicks, long elapsedTicks) {
  return elapsedTicks <= 0 || usedTicks <= 0 ? 0 : ClampedProduct(usedTicks, kWhole) / elapsedTicks;
}

const char* StateName(char state) {
  const auto* const found =
      std::find_if(std::begin(kStates), std::end(kStates),
                   [state](const LetterName& name) { return name.letter == state; });
  return found == std::end(kStates) ? "unknown" : found->word;
}

std::optional<char> ParseState(std::string_view text) {
  const std::string lower = LowerCase(text);
  for (const LetterName& state : kStates) {
    if (lower == state.word || text == std::string_view(&state.letter, 1)) {
      return state.letter;
    }
  }
  return std::nullopt;
}

std::string TerminalName(long terminal, const std::string& sys) {
  if (terminal == 0) {
    return "none";
  }
  const auto device = static_cast<dev_t>(static_cast<unsigned>(terminal));
  const unsigned major = ::gnu_dev_major(device);
  const unsigned minor = ::gnu_dev_minor(device);
  if (major >= kFirstPtsMajor && major <= kLastPtsMajor) {
    return "pts/" + std::to_string((major - kFirstPtsMajor) * kPtsPerMajor + minor);
  }
  const std::string numbers = FormatDeviceNumber(device);
  const auto target = ReadLink(sys + "/dev/char/" + numbers);
  return target ? target->substr(target->rfind('/') + 1) : numbers;
}

}  // namespace Kestrel::Host

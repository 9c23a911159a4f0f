// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "kestrel/Version.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "tools/complete/Complete.h"
#include "tools/complete/Completion.h"
#include "tools/complete/CursorLine.h"
#include "tools/complete/LoadPlugins.h"
#include "vexil/Words.h"

namespace {

using Kestrel::Complete::Completion;
using Kestrel::Complete::CursorLine;
using Kestrel::Vexil::Words;

constexpr int kUsageError = 2;
constexpr std::chrono::milliseconds kMaxTime(300);

constexpr const char* kUsage =
    "vexil-complete INDEX WORD...\n"
    "\n"
    "Prints what a word of a command line of vexil may become, for the completion of shells.\n"
    "\n"
    "  INDEX      the index of the word at the cursor, from 0\n"
    "  WORD       the words of the line without quotes, the first is vexil or vexil-explain; the\n"
    "             one at the cursor ends at the cursor\n"
    "  --help     show this message\n"
    "  --version  show the name and the version of the program\n"
    "\n"
    "A line per candidate: the word, or the word, a tab and a description. The last line is a "
    "colon\n"
    "followed by nothing, \"files\", \"folders\" or \"nospace\".\n";

// Parses the index, which is at most the number of words. Returns nothing for anything else.
std::optional<std::size_t> ReadIndex(std::string_view text, std::size_t count) {
  std::size_t index = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
  const bool isIndex = error == std::errc() && end == text.data() + text.size() && index <= count;
  return isIndex ? std::optional(index) : std::nullopt;
}

// Connects the standard streams to /dev/null, because plug-ins may read from and write to them.
// Returns a file descriptor of the original standard output.
int TakeStandardOutput() {
  const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nothing, stream);
  }
  return output;
}

Completion CompleteAt(const Words& words, std::size_t index) {
  const auto deadline = std::chrono::steady_clock::now() + kMaxTime;
  const CursorLine line = Kestrel::Complete::ReadCursorLine(words, index);
  // Never destroyed: the process ends with all plug-ins loaded.
  auto* dispatcher = new Kestrel::AutoCli::CliDispatcher;
  Kestrel::Complete::LoadPlugins(*dispatcher, line.settledOptions);
  return Kestrel::Complete::CompleteLine(*dispatcher, line, deadline);
}

// Ignores all exceptions of plug-ins, because a shell has no use for their messages.
Completion TryToCompleteAt(const Words& words, std::size_t index) {
  if (index == 0) {
    return {};
  }
  try {
    return CompleteAt(words, index);
  } catch (...) {
    return {};
  }
}

void WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      return;
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
}

int PrintAnswer(const char* text) {
  return std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (argc == 2 && first == "--help") {
    return PrintAnswer(kUsage);
  }
  if (argc == 2 && first == "--version") {
    return PrintAnswer("vexil-complete " KESTREL_VERSION_STRING "\n");
  }
  const Words words(argv + (argc > 1 ? 2 : argc), argv + argc);
  const std::optional<std::size_t> index = ReadIndex(first, words.size());
  if (!index) {
    std::fputs("vexil-complete: the first argument is not the index of a word\n", stderr);
    return kUsageError;
  }
  const int output = TakeStandardOutput();
  WriteAll(output, WriteCompletion(TryToCompleteAt(words, *index)));
  _exit(EXIT_SUCCESS);
}

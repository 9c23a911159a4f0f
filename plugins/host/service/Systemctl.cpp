// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/Systemctl.h"

#include <kestrel/KestrelException.h>

#include <optional>
#include <string_view>

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr char kProgram[] = "systemctl";
// Enough for a message, but not for a log.
constexpr std::size_t kMaxWordsSize = 1000;

}  // namespace

std::string OnOneLine(std::string_view text) {
  std::string joined;
  for (const std::string_view line : SplitLines(text)) {
    const std::string_view words = Trim(line);
    joined.append(joined.empty() || words.empty() ? "" : " ").append(words);
  }
  return joined;
}

std::string FailureWords(const ProgramResult& result) {
  const std::string words = OnOneLine(result.errorOutput);
  if (words.empty() || result.isTimedOut) {
    return result.GetReason();
  }
  return SanitizedText(std::string_view(words).substr(0, kMaxWordsSize))->GetValue();
}

Systemctl::Systemctl(std::chrono::milliseconds limit) : limit_(limit) {
  std::optional<std::string> path = FindProgram(kProgram);
  if (!path) {
    throw KestrelException("systemd runs here, but its program systemctl is not in PATH");
  }
  path_ = *std::move(path);
}

std::string Systemctl::Ask(const std::vector<std::string>& arguments) const {
  ProgramResult result = RunProgramWithin(limit_, path_, arguments);
  if (result.status != 0) {
    throw KestrelException("systemctl failed: " + FailureWords(result));
  }
  return std::move(result.output);
}

ProgramResult Systemctl::Change(const std::string& action, const std::string& unit,
                                std::chrono::milliseconds limit) const {
  return RunProgramWithin(limit, path_, {"--no-ask-password", "--no-pager", action, "--", unit});
}

}  // namespace Kestrel::Host

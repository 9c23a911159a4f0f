// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/KernelLog.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr int kLevels = 8;
// The kernel limits a message to 8 KiB, and returns an error if the reader's buffer is too small.
constexpr std::size_t kMaxMessageSize = std::size_t{32} << 10;
// More messages than any kernel buffer contains. Reading stops at this number, because messages may
// be written as fast as they are read.
constexpr std::size_t kMaxMessages = 1000000;

constexpr const char* kFacilities[] = {
    "kern",   "user",   "mail",     "daemon", "auth",   "syslog",   "lpr",     "news",
    "uucp",   "cron",   "authpriv", "ftp",    "ntp",    "security", "console", "clock",
    "local0", "local1", "local2",   "local3", "local4", "local5",   "local6",  "local7"};

[[noreturn]] void Fail(const std::string& path) {
  std::string reason = std::strerror(errno);
  if (errno == EPERM || errno == EACCES) {
    reason += "; only root and processes with CAP_SYSLOG may read it";
  }
  throw KestrelException("Unable to read " + path + ": " + reason);
}

int HexDigit(char letter) {
  if (letter >= '0' && letter <= '9') {
    return letter - '0';
  }
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// The kernel writes the backslash and unprintable characters as \xHH.
std::string DecodeText(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool isEscape = text.compare(index, 2, "\\x") == 0 && index + 3 < text.size() &&
                          HexDigit(text[index + 2]) >= 0 && HexDigit(text[index + 3]) >= 0;
    if (!isEscape) {
      decoded += text[index];
      continue;
    }
    decoded += static_cast<char>(HexDigit(text[index + 2]) << 4 | HexDigit(text[index + 3]));
    index += 3;
  }
  return decoded;
}

// Throws rather than skips a message, so that the list is never shorter than the log.
KernelMessage RequireMessage(std::string_view entry, const std::string& path) {
  auto message = ParseKernelMessage(entry);
  if (!message) {
    throw KestrelException("Unable to read " + path + ": a message is in an unknown form");
  }
  return std::move(*message);
}

}  // namespace

const char* const kKernelLog = "/dev/kmsg";

const char* FacilityName(int facility) {
  constexpr int kCount = sizeof(kFacilities) / sizeof(kFacilities[0]);
  return facility >= 0 && facility < kCount ? kFacilities[facility] : "unknown";
}

std::optional<KernelMessage> ParseKernelMessage(std::string_view entry) {
  // The lines after the first one are properties of the device that the message concerns.
  const std::string_view line = entry.substr(0, entry.find('\n'));
  const std::size_t textStart = line.find(';');
  if (textStart == std::string_view::npos) {
    return std::nullopt;
  }
  const auto fields = Split(line.substr(0, textStart), ',');
  const auto priority = ParseNumber(fields[0]);
  const auto microseconds = fields.size() > 2 ? ParseNumber(fields[2]) : std::nullopt;
  if (!priority || *priority < 0 || !microseconds) {
    return std::nullopt;
  }
  KernelMessage message;
  message.level = static_cast<int>(*priority % kLevels);
  message.facility = static_cast<int>(*priority / kLevels);
  message.microseconds = *microseconds;
  message.text = DecodeText(line.substr(textStart + 1));
  return message;
}

std::vector<KernelMessage> ReadKernelLog(const std::string& path) {
  const FileDescriptor log(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!log.IsOpen()) {
    Fail(path);
  }
  std::vector<KernelMessage> messages;
  std::array<char, kMaxMessageSize> buffer;
  while (messages.size() < kMaxMessages) {
    const ssize_t count = log.Read(buffer.data(), buffer.size());
    if (count < 0 && errno == EPIPE) {
      continue;  // the oldest message was overwritten before it was read
    }
    if (count < 0 && errno != EAGAIN) {
      Fail(path);
    }
    if (count <= 0) {
      break;
    }
    messages.push_back(RequireMessage({buffer.data(), static_cast<std::size_t>(count)}, path));
  }
  return messages;
}

}  // namespace Kestrel::Host

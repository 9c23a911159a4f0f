// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: a line with the name of a parser of the host plug-in, then what that parser reads.
//
// Only KestrelException escapes. There are no more rows than the input has room for, and memory and
// time are bounded by a multiple of the input.

#include <linux/netlink.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utmpx.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "FuzzInput.h"
#include "Property.h"
#include "Usage.h"
#include "kestrel/KestrelException.h"
#include "plugins/host/network/InternetSockets.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkRoutes.h"
#include "plugins/host/network/SocketTables.h"
#include "plugins/host/network/UnixSockets.h"
#include "plugins/host/storage/DiskCounters.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/system/Processes.h"
#include "plugins/host/system/Sessions.h"

namespace Kestrel::Fuzz {
namespace {

/// A nameless file with the content `text`, for parsers that read the file at a path.
class TextFile {
 public:
  explicit TextFile(const std::string& text) : file_(memfd_create("text", MFD_CLOEXEC)) {
    Require(pwrite(file_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
            "the text can be written");
  }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  ~TextFile() { close(file_); }

  std::string GetPath() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

std::size_t CountLines(const std::string& text) {
  return 1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

std::size_t CountMessages(const std::string& bytes) { return bytes.size() / sizeof(nlmsghdr); }

void ParseMounts(const std::string& text) {
  const TextFile file(text);
  const auto mounts = Host::ReadMounts(file.GetPath(), "/nowhere");
  Require(mounts.size() <= CountLines(text), "a mount for each line at most");
}

void ParseDisks(const std::string& text) {
  const TextFile file(text);
  const auto disks = Host::ReadDiskCounters(file.GetPath());
  Require(disks.size() <= CountLines(text), "a disk for each line at most");
  Host::CountedBetween(disks, disks);
}

void ParseProcess(const std::string& text) {
  const auto process = Host::ParseProcess(text);
  Require(!process || text.find("(" + process->name + ")") != std::string::npos,
          "the name is what the parentheses contain");
}

void ParseUtmp(const std::string& bytes) {
  const auto sessions = Host::ParseSessionRecords(bytes);
  Require(sessions.size() <= bytes.size() / sizeof(utmpx), "a session for each entry at most");
  for (const Host::Session& session : sessions) {
    Require(session.user.size() <= sizeof(utmpx::ut_user) &&
                session.terminal.size() <= sizeof(utmpx::ut_line) &&
                session.host.size() <= sizeof(utmpx::ut_host),
            "no string continues in the next field");
  }
}

void ParseTcp(const std::string& text) {
  for (const long family : {4L, 6L}) {
    Require(Host::ParseInternetSockets(text, "tcp", family).size() <= CountLines(text),
            "a socket for each line at most");
  }
}

template <typename Rows>
void RequireMessages(const std::string& bytes, const Rows& rows) {
  Require(rows.size() <= CountMessages(bytes), "a row for each message at most");
}

const std::map<std::string_view, void (*)(const std::string&)> kParsers = {
    {"mounts", ParseMounts},
    {"disks", ParseDisks},
    {"process", ParseProcess},
    {"utmp", ParseUtmp},
    {"tcp", ParseTcp},
    {"diagnosis",
     [](const std::string& bytes) {
       RequireMessages(bytes, Host::ParseInternetDiagnosis(bytes, "tcp"));
     }},
    {"unix",
     [](const std::string& bytes) { RequireMessages(bytes, Host::ParseUnixSockets(bytes)); }},
    {"routes", [](const std::string& bytes) { RequireMessages(bytes, Host::ParseRoutes(bytes)); }},
    {"neighbors",
     [](const std::string& bytes) { RequireMessages(bytes, Host::ParseNeighbors(bytes)); }},
    {"links", [](const std::string& bytes) { RequireMessages(bytes, Host::ParseLinks(bytes)); }},
    {"addresses",
     [](const std::string& bytes) { RequireMessages(bytes, Host::ParseAddresses(bytes)); }},
};

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  FuzzInput input(data, size);
  const auto parser = kParsers.find(input.TakeLine());
  if (parser == kParsers.end()) {
    return 0;
  }
  const std::string bytes = input.TakeRest();
  const Usage usage(bytes.size());
  try {
    parser->second(bytes);
  } catch (const Kestrel::KestrelException&) {
    // The input is rejected.
  }
  usage.Check();
  return 0;
}

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/ServicePorts.h"

#include <charconv>
#include <optional>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

std::optional<long> ReadPort(std::string_view text) {
  constexpr long kMaxPort = 65535;
  long port = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, port);
  const bool isPort = result.ec == std::errc() && result.ptr == end && port >= 0;
  return isPort && port <= kMaxPort ? std::optional<long>(port) : std::nullopt;
}

// Parses "ssh 22/tcp alias ... # comment".
std::optional<ServicePort> ParseLine(std::string_view line) {
  const std::vector<std::string_view> words = SplitWords(line.substr(0, line.find('#')));
  if (words.size() < 2) {
    return std::nullopt;
  }
  const std::size_t slash = words[1].find('/');
  const auto port = ReadPort(words[1].substr(0, slash));
  if (!port || slash == std::string_view::npos || slash + 1 == words[1].size()) {
    return std::nullopt;
  }
  return ServicePort{*port, std::string(words[1].substr(slash + 1)), std::string(words[0]),
                     std::vector<std::string>(words.begin() + 2, words.end())};
}

}  // namespace

std::vector<ServicePort> ParseServicePorts(std::string_view text) {
  std::vector<ServicePort> ports;
  for (const std::string_view line : SplitLines(text)) {
    if (auto port = ParseLine(line)) {
      ports.push_back(std::move(*port));
    }
  }
  return ports;
}

std::vector<ServicePort> ReadServicePorts(const std::string& root) {
  return ParseServicePorts(ReadRequiredFile(root + "/etc/services"));
}

}  // namespace Kestrel::Host

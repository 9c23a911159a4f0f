// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Each line of the file has a keyword at its very beginning, then white space and values. "#" and
// ";" start comments, but only at the beginning of a line. "domain" is an old form of "search".

#include "plugins/host/network/ResolverSettings.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr const char* kServer = "server";
constexpr const char* kSearch = "search";
constexpr const char* kOption = "option";
constexpr const char* kSortList = "sortlist";

constexpr const char* kResolverFile = "/etc/resolv.conf";
constexpr const char* kResolvedFile = "/run/systemd/resolve/resolv.conf";

// The C library uses no more servers than this.
constexpr long kMaxServers = 3;

// An IPv6 address may have a zone after "%".
bool IsAddress(const std::string& text) {
  std::array<unsigned char, sizeof(in6_addr)> bytes;
  return ::inet_pton(AF_INET, text.c_str(), bytes.data()) == 1 ||
         ::inet_pton(AF_INET6, text.substr(0, text.find('%')).c_str(), bytes.data()) == 1;
}

/// Collects the settings of one file.
class Collector {
 public:
  explicit Collector(const std::string& source) : source_(source) {}

  void AddLine(std::string_view line) {
    const std::size_t end = line.find_first_of(" \t");
    const std::string_view keyword = line.substr(0, end);
    std::vector<std::string_view> values = SplitWords(line.substr(keyword.size()));
    if (keyword == "nameserver" && !values.empty()) {
      AddServer(std::string(values[0]));
    } else if (keyword == "search") {
      ReplaceSearchList(values);
    } else if (keyword == "domain") {
      values.resize(std::min<std::size_t>(values.size(), 1));
      ReplaceSearchList(values);
    } else if (keyword == "options") {
      AddAll(kOption, values);
    } else if (keyword == "sortlist") {
      AddAll(kSortList, values);
    }
  }

  std::vector<ResolverSetting> TakeSettings() { return std::move(settings_); }

 private:
  void Add(const char* kind, const std::string& value, bool isUsed) {
    const auto position =
        std::count_if(settings_.begin(), settings_.end(),
                      [kind](const ResolverSetting& setting) { return setting.kind == kind; });
    settings_.push_back({kind, value, position + 1, isUsed, source_});
  }

  void AddAll(const char* kind, const std::vector<std::string_view>& values) {
    for (const std::string_view value : values) {
      Add(kind, std::string(value), true);
    }
  }

  void AddServer(const std::string& address) {
    const bool isUsed = IsAddress(address) && usedServers_ < kMaxServers;
    usedServers_ += isUsed ? 1 : 0;
    Add(kServer, address, isUsed);
  }

  // A later list replaces the earlier ones; a line without domains is ignored.
  void ReplaceSearchList(const std::vector<std::string_view>& domains) {
    if (domains.empty()) {
      return;
    }
    for (ResolverSetting& setting : settings_) {
      setting.isUsed = setting.isUsed && setting.kind != kSearch;
    }
    AddAll(kSearch, domains);
  }

  const std::string& source_;
  std::vector<ResolverSetting> settings_;
  long usedServers_ = 0;
};

bool IsUsedServer(const ResolverSetting& setting) {
  return setting.kind == kServer && setting.isUsed;
}

// Whether the setting is a server that is used and has an address of systemd-resolved.
bool IsResolved(const ResolverSetting& setting) {
  return IsUsedServer(setting) && (setting.value == "127.0.0.53" || setting.value == "127.0.0.54");
}

void AddServersOfResolved(const std::string& root, std::vector<ResolverSetting>& settings) {
  const auto text = ReadOptionalFile(root + kResolvedFile);
  if (!text) {
    return;
  }
  for (ResolverSetting& setting : ParseResolverSettings(*text, kResolvedFile)) {
    if (setting.kind == kServer) {
      setting.isUsed = IsAddress(setting.value);  // systemd-resolved has no limit of three
      settings.push_back(std::move(setting));
    }
  }
}

}  // namespace

const WordSet& ResolverSettingKinds() {
  static const WordSet words = WordSet().Word(kServer).Word(kSearch).Word(kOption).Word(kSortList);
  return words;
}

std::vector<ResolverSetting> ParseResolverSettings(std::string_view text,
                                                   const std::string& source) {
  Collector collector(source);
  for (const std::string_view line : SplitLines(text)) {
    collector.AddLine(line);
  }
  return collector.TakeSettings();
}

std::vector<ResolverSetting> ReadResolverSettings(const std::string& root) {
  const auto text = ReadOptionalFile(root + kResolverFile);
  std::vector<ResolverSetting> settings = ParseResolverSettings(text.value_or(""), kResolverFile);
  if (std::none_of(settings.begin(), settings.end(), IsUsedServer)) {
    settings.push_back({kServer, "127.0.0.1", 1, true, "default"});
  }
  if (std::any_of(settings.begin(), settings.end(), IsResolved)) {
    AddServersOfResolved(root, settings);
  }
  return settings;
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/RoutingNames.h"

#include <linux/rtnetlink.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// The administrator's folder precedes those of the distribution.
constexpr const char* kFolders[] = {"/etc/iproute2", "/usr/share/iproute2", "/usr/lib/iproute2"};

std::optional<unsigned> ReadDigits(std::string_view text) {
  const bool isHexadecimal = StartsWith(text, "0x") || StartsWith(text, "0X");
  if (isHexadecimal) {
    text.remove_prefix(2);
  }
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, isHexadecimal ? 16 : 10);
  return result.ec == std::errc() && result.ptr == end ? std::optional<unsigned>(number)
                                                       : std::nullopt;
}

char ToLower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool EqualsInAnyCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char one, char other) { return ToLower(one) == ToLower(other); });
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

void AddFilesOf(const std::string& folder, NumberTable& table) {
  for (const std::string& name : ListOptionalFolder(folder).value_or(std::vector<std::string>())) {
    const bool isRead = EndsWith(name, ".conf") && name[0] != '.';
    if (const auto text = isRead ? ReadOptionalFile(folder + "/" + name) : std::nullopt) {
      table.AddLines(*text);
    }
  }
}

NumberTable ReadTable(const std::string& root, const std::string& name,
                      const NumberTable& builtIn) {
  NumberTable table = builtIn;
  for (const char* const folder : kFolders) {
    if (const auto text = ReadOptionalFile(root + folder + "/" + name)) {
      table.AddLines(*text);
      break;
    }
  }
  // Adds the administrator's names last, so that they replace the others.
  for (auto folder = std::rbegin(kFolders); folder != std::rend(kFolders); ++folder) {
    AddFilesOf(root + *folder + "/" + name + ".d", table);
  }
  return table;
}

}  // namespace

NumberTable::NumberTable(std::initializer_list<std::pair<const unsigned, std::string>> names)
    : names_(names) {}

void NumberTable::AddLines(std::string_view text) {
  for (const std::string_view line : SplitLines(text)) {
    const std::vector<std::string_view> words = SplitWords(line.substr(0, line.find('#')));
    const auto number = words.size() == 2 ? ReadDigits(words[0]) : std::nullopt;
    if (number) {
      names_[*number] = words[1];
    }
  }
}

std::string NumberTable::NameOf(unsigned number) const {
  const auto found = names_.find(number);
  return found == names_.end() ? std::to_string(number) : found->second;
}

std::string NumberTable::GetList() const {
  std::string list;
  for (const auto& entry : names_) {
    list += (list.empty() ? "" : ", ") + entry.second;
  }
  return list;
}

std::optional<unsigned> NumberTable::NumberOf(std::string_view text) const {
  for (const auto& [number, name] : names_) {
    if (EqualsInAnyCase(name, text)) {
      return number;
    }
  }
  return ReadDigits(text);
}

NumberFilter::NumberFilter(const CallSpec::Input& input, const char* parameter,
                           const NumberTable& table, CallSpec::Output& output) {
  std::vector<std::string> given;
  input.GetParameterList(parameter, given);
  for (const std::string& text : given) {
    if (const auto number = table.NumberOf(text)) {
      numbers_.push_back(*number);
    } else {
      output.AddErrorMessage("There is no such " + std::string(parameter) + ": '" + text + "'; --" +
                             parameter + " is a number or one of: " + table.GetList());
    }
  }
}

bool NumberFilter::Accepts(unsigned number) const {
  return numbers_.empty() || std::find(numbers_.begin(), numbers_.end(), number) != numbers_.end();
}

const RoutingNames& BuiltInRoutingNames() {
  static const RoutingNames names = {{{RT_TABLE_UNSPEC, "unspec"},
                                      {RT_TABLE_DEFAULT, "default"},
                                      {RT_TABLE_MAIN, "main"},
                                      {RT_TABLE_LOCAL, "local"}},
                                     {{RTPROT_UNSPEC, "none"},
                                      {RTPROT_REDIRECT, "redirect"},
                                      {RTPROT_KERNEL, "kernel"},
                                      {RTPROT_BOOT, "boot"},
                                      {RTPROT_STATIC, "static"},
                                      {RTPROT_GATED, "gated"},
                                      {RTPROT_RA, "ra"},
                                      {RTPROT_MRT, "mrt"},
                                      {RTPROT_ZEBRA, "zebra"},
                                      {RTPROT_BIRD, "bird"},
                                      {RTPROT_DNROUTED, "dnrouted"},
                                      {RTPROT_XORP, "xorp"},
                                      {RTPROT_NTK, "ntk"},
                                      {RTPROT_DHCP, "dhcp"},
                                      {RTPROT_MROUTED, "mrouted"},
                                      {RTPROT_KEEPALIVED, "keepalived"},
                                      {RTPROT_BABEL, "babel"},
                                      {RTPROT_BGP, "bgp"},
                                      {RTPROT_ISIS, "isis"},
                                      {RTPROT_OSPF, "ospf"},
                                      {RTPROT_RIP, "rip"},
                                      {RTPROT_EIGRP, "eigrp"}},
                                     {{RT_SCOPE_UNIVERSE, "global"},
                                      {RT_SCOPE_SITE, "site"},
                                      {RT_SCOPE_LINK, "link"},
                                      {RT_SCOPE_HOST, "host"},
                                      {RT_SCOPE_NOWHERE, "nowhere"}}};
  return names;
}

RoutingNames ReadRoutingNames(const std::string& root) {
  const RoutingNames& builtIn = BuiltInRoutingNames();
  return {ReadTable(root, "rt_tables", builtIn.tables),
          ReadTable(root, "rt_protos", builtIn.protocols),
          ReadTable(root, "rt_scopes", builtIn.scopes)};
}

}  // namespace Kestrel::Host

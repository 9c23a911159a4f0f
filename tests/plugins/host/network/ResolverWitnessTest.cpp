// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <resolv.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "plugins/host/network/MadeUpEtc.h"
#include "plugins/host/support/HostCall.h"

// `network dns list`, compared with the settings that the C library reads.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAreArray;

std::string AddressText(int family, const void* bytes) {
  std::array<char, INET6_ADDRSTRLEN> text = {};
  ::inet_ntop(family, bytes, text.data(), text.size());
  return text.data();
}

struct LibrarySettings {
  std::vector<std::string> servers;
  std::vector<std::string> domains;
};

LibrarySettings ReadByLibrary() {
  ::unsetenv("LOCALDOMAIN");
  ::unsetenv("RES_OPTIONS");
  struct __res_state state = {};
  EXPECT_EQ(::res_ninit(&state), 0);
  LibrarySettings settings;
  for (int index = 0; index < state.nscount; ++index) {
    const sockaddr_in& four = state.nsaddr_list[index];
    const sockaddr_in6* const six = state._u._ext.nsaddrs[index];
    settings.servers.push_back(four.sin_family == AF_INET ? AddressText(AF_INET, &four.sin_addr)
                                                          : AddressText(AF_INET6, &six->sin6_addr));
  }
  for (int index = 0; index < MAXDNSRCH && state.dnsrch[index] != nullptr; ++index) {
    settings.domains.emplace_back(state.dnsrch[index]);
  }
  ::res_nclose(&state);
  return settings;
}

std::vector<std::string> UsedValues(const std::string& kind) {
  std::vector<std::string> values;
  for (const Row& row : CallRows("network dns list", {{"kind", kind}})) {
    if (row.at("Used") == "true") {
      values.push_back(row.at("Value"));
    }
  }
  return values;
}

struct FileCase {
  const char* name;
  std::string text;
};

class ResolverWitnessTest : public ::testing::TestWithParam<FileCase> {};

TEST_P(ResolverWitnessTest, WhatIsUsedIsWhatTheLibraryUses) {
  const std::string refusal = RunWithEtc({{"resolv.conf", GetParam().text}}, [] {
    const LibrarySettings library = ReadByLibrary();
    EXPECT_THAT(UsedValues("server"), ElementsAreArray(library.servers));
    if (GetParam().text.find("example") != std::string::npos) {
      EXPECT_THAT(UsedValues("search"), ElementsAreArray(library.domains));
    }
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

const FileCase kFiles[] = {
    {"Nothing", ""},
    {"OneServer", "nameserver 192.0.2.53\n"},
    {"NoLineFeed", "nameserver 192.0.2.53"},
    {"ServersOfBothFamilies", "nameserver 2001:db8::53\nnameserver 192.0.2.53\n"},
    {"FourServers",
     "nameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\nnameserver 10.0.0.4\n"},
    {"FourServersOfBothFamilies",
     "nameserver ::1\nnameserver 10.0.0.2\nnameserver ::3\nnameserver ::4\n"},
    {"InvalidServers",
     "nameserver 10.0.0.300\nnameserver name.example\nnameserver 10.0.0.2\nnameserver ::g\n"},
    {"InvalidServersOnly", "nameserver 10.0.0.300\n"},
    {"Comments", "# nameserver 10.0.0.1\n;nameserver 10.0.0.2\nnameserver 10.0.0.3\n"},
    {"CommentAfterTheValue", "nameserver 10.0.0.3 # the third\n"},
    {"SpaceBefore", " nameserver 10.0.0.1\n\tnameserver 10.0.0.2\n"},
    {"TabsBetween", "nameserver\t\t10.0.0.1\nsearch\ta.example\tb.example\n"},
    {"UpperCase", "NameServer 10.0.0.1\n"},
    {"Search", "search a.example b.example\n"},
    {"Domain", "domain a.example\n"},
    {"DomainWithMore", "domain a.example b.example\n"},
    {"DomainAfterSearch", "search a.example b.example\ndomain c.example\n"},
    {"SearchAfterDomain", "domain c.example\nsearch a.example b.example\n"},
    {"SearchTwice", "search a.example\nsearch b.example c.example\n"},
    {"EmptySearchAfterwards", "search a.example\nsearch\n"},
    {"SearchWithSpacesAtTheEnd", "search a.example  \t \n"},
    {"Options", "options timeout:1 attempts:2\nnameserver 10.0.0.1\n"},
};
INSTANTIATE_TEST_SUITE_P(Files, ResolverWitnessTest, ::testing::ValuesIn(kFiles),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "plugins/support/CommandCall.h"

// Calls with a missing or invalid parameter. Each is rejected with one message.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

struct Refusal {
  const char* name;
  const char* command;
  Parameters parameters;
  std::string message;
};

std::string Range(const std::string& parameter, const std::string& range) {
  return "Invalid data constraint for parameter '" + parameter +
         "'. Expected integer in the range " + range;
}

std::string OneOf(const std::string& parameter, const std::string& rest) {
  return "Invalid data constraint for parameter '" + parameter +
         "'. Expected a single value from the set " + rest;
}

std::string Pattern(const std::string& parameter, const std::string& regex) {
  return "Invalid data constraint for parameter '" + parameter +
         "'. Value does not match the expected regular expression (" + regex + ")";
}

std::string Boolean(const std::string& parameter, const std::string& value) {
  return "Invalid data '" + value + "' for parameter " + parameter +
         " expected one of [1, 0, y, n, true, false, True, False, yes, no, t, f, T, F]";
}

std::string Integer(const std::string& parameter, const std::string& value) {
  return "Invalid data '" + value + "' for parameter " + parameter + " expected type Integer";
}

std::string Flag(const std::string& parameter, const std::string& value) {
  return "Invalid data '" + value + "' for parameter " + parameter +
         ".  This parameter is a flag and cannot accept any values. ";
}

std::string Missing(const std::string& parameter) {
  return "Missing required parameter --" + parameter;
}

constexpr const char* kParameterName = "[^./]+([./][^./]+)*";

class HostRefusalTest : public ::testing::TestWithParam<Refusal> {};

TEST_P(HostRefusalTest, IsReported) {
  EXPECT_THAT(CallErrors(GetParam().command, GetParam().parameters),
              ElementsAre(GetParam().message));
}

const Refusal kSystemRefusals[] = {
    {"GroupsWithoutAccount", "system account groups", {}, Missing("name")},
    {"AccountIdBelowZero",
     "system account list",
     {{"minimum-id", "-1"}},
     Range("minimum-id", "0-4294967295")},
    {"AccountIdBeyond32Bits",
     "system account list",
     {{"minimum-id", "4294967296"}},
     Range("minimum-id", "0-4294967295")},
    {"AccountIdIsAWord", "system account list", {{"minimum-id", "x"}}, Integer("minimum-id", "x")},
    {"LoginIsNoFlag", "system account list", {{"login", "yes"}}, Flag("login", "yes")},
    {"CpuNumber", "system cpu list", {{"number", "65537"}}, Range("number", "0-65536")},
    {"CpuState", "system cpu list", {{"online", "maybe"}}, Boolean("online", "maybe")},
    {"CountAllIsNoFlag", "system cpu count", {{"all", "1"}}, Flag("all", "1")},
    {"ModuleWithASlash",
     "system module check",
     {{"name", "a/b"}},
     Pattern("name", "[A-Za-z0-9_-]+")},
    {"ModuleWithoutAName",
     "system module check",
     {{"name", ""}},
     Pattern("name", "[A-Za-z0-9_-]+")},
    {"NoModule", "system module check", {}, Missing("name")},
    {"UnusedIsNoFlag", "system module list", {{"unused", "no"}}, Flag("unused", "no")},
    {"NoParameterToGet", "system parameter get", {}, Missing("name")},
    {"ParameterAboveItsFolder",
     "system parameter get",
     {{"name", "../x"}},
     Pattern("name", kParameterName)},
    {"ParameterWithAnEmptyPart",
     "system parameter get",
     {{"name", "vm..x"}},
     Pattern("name", kParameterName)},
    {"ParameterThatStartsWithASlash",
     "system parameter set",
     {{"name", "/vm"}, {"value", "1"}},
     Pattern("name", kParameterName)},
    {"NoValueToSet", "system parameter set", {{"name", "vm.x"}}, Missing("value")},
    {"GroupThatEndsWithADot",
     "system parameter list",
     {{"under", "vm."}},
     Pattern("under", kParameterName)},
    {"ProcessZero", "system process list", {{"id", "0"}}, Range("id", "1-4194304")},
    {"ProcessBeyondTheLargest",
     "system process list",
     {{"id", "4194305"}},
     Range("id", "1-4194304")},
    {"ProcessState",
     "system process list",
     {{"state", "Runs"}},
     "There is no such state: 'Runs'; --state is running, sleeping, waiting, stopped, traced, "
     "zombie, idle, parked, dead, or the letter that ps prints"},
    {"ProcessOrder",
     "system process list",
     {{"sort", "size"}},
     "There is no field 'size' to sort by. Sort by one of: CPU, CPU Hundredths, Command, "
     "Id, Kernel, Name, Nice, Parent, Resident, Resident Bytes, Seconds, Started, State, Terminal, "
     "Threads, Time, User, Virtual, Virtual Bytes."},
    {"ProcessMemory",
     "system process list",
     {{"minimum-memory", "-1"}},
     Range("minimum-memory", "0-1152921504606846976")},
    {"ProcessMemoryWithAUnit",
     "system process list",
     {{"minimum-memory", "1K"}},
     Integer("minimum-memory", "1K")},
    {"KernelThreads",
     "system process list",
     {{"kernel-threads", "2"}},
     Boolean("kernel-threads", "2")},
    {"SignalOfNobody",
     "system process signal",
     {},
     "Say which processes to signal: either --id or --name"},
    {"SignalByIdAndName",
     "system process signal",
     {{"id", "4194304"}, {"name", "x"}},
     "Say which processes to signal: either --id or --name"},
    {"SignalToProcessZero", "system process signal", {{"id", "0"}}, Range("id", "1-4194304")},
    {"SignalUnknown",
     "system process signal",
     {{"id", "4194304"}, {"signal", "SIGNOSUCH"}},
     "There is no such signal: 'SIGNOSUCH'; --signal is a name such as TERM or a number from 1 to "
     "64"},
    {"FullIsNoFlag", "system process list", {{"full", "x"}}, Flag("full", "x")},
};

const Refusal kStorageRefusals[] = {
    {"DeviceKind",
     "storage device list",
     {{"kind", "raid7"}},
     OneOf("kind",
           "[disk, part, rom, loop, lvm, crypt, mpath, dm, raid0, raid1, raid4, raid5, raid6, "
           "raid10, linear] got 'raid7'")},
    {"DeviceSizeBelowZero",
     "storage device list",
     {{"minimum-size", "-1"}},
     Range("minimum-size", "0-1099511627776")},
    {"DeviceReadOnly", "storage device list", {{"read-only", "ro"}}, Boolean("read-only", "ro")},
    {"DeviceRemovable", "storage device list", {{"removable", ""}}, Boolean("removable", "")},
    {"UsageBeyondAHundred",
     "storage filesystem list",
     {{"minimum-percent", "101"}},
     Range("minimum-percent", "0-100")},
    {"NoTimeToAnswer", "storage filesystem list", {{"timeout", "0"}}, Range("timeout", "1-60")},
    {"TooMuchTime", "storage filesystem list", {{"timeout", "61"}}, Range("timeout", "1-60")},
    {"AllIsNoFlag", "storage filesystem list", {{"all", "x"}}, Flag("all", "x")},
    {"NoIntervalOfCounters",
     "storage device counter list",
     {{"interval", "0"}},
     Range("interval", "1-3600")},
    {"UsageWithoutAFolder", "storage usage list", {}, Missing("directory")},
    {"UsageDepthBelowZero",
     "storage usage list",
     {{"directory", "/"}, {"depth", "-1"}},
     Range("depth", "0-1000000")},
    {"MountReadOnly",
     "storage mount list",
     {{"read-only", "maybe"}},
     Boolean("read-only", "maybe")},
};

const Refusal kNetworkRefusals[] = {
    {"AddressFamily", "network address list", {{"family", "5"}}, OneOf("family", "[4, 6]")},
    {"PrefixBeyondAnAddress",
     "network address list",
     {{"prefix-length", "129"}},
     Range("prefix-length", "0-128")},
    {"InterfaceWithASpace",
     "network interface get",
     {{"interface", "eth 0"}},
     "There is no network interface named 'eth 0'"},
    {"InterfaceWithoutAName",
     "network interface get",
     {{"interface", ""}},
     "There is no network interface named ''"},
    {"NoInterface", "network interface get", {}, Missing("interface")},
    {"InterfaceState",
     "network interface list",
     {{"state", "upp"}},
     "There is no such state: 'upp'; --state is one of: UNKNOWN, NOTPRESENT, DOWN, LOWERLAYERDOWN, "
     "TESTING, DORMANT, UP"},
    {"InterfaceUp", "network interface list", {{"up", "UP"}}, Boolean("up", "UP")},
    {"ConnectionProtocol",
     "network connection list",
     {{"protocol", "sctp"}},
     "There is no such protocol: 'sctp'; --protocol is one of: tcp, udp, unix"},
    {"ConnectionState",
     "network connection list",
     {{"state", "open"}},
     "There is no such state: 'open'; --state is one of: listen, established, syn-sent, "
     "syn-received, fin-wait-1, fin-wait-2, close-wait, last-ack, closing, time-wait, closed, "
     "connected, unconnected"},
    {"PortZero", "network connection list", {{"port", "0"}}, Range("port", "1-65535")},
    {"PortBeyond16Bits", "network connection list", {{"port", "65536"}}, Range("port", "1-65535")},
    {"PortByName", "network connection list", {{"port", "ssh"}}, Integer("port", "ssh")},
    {"NeighborState",
     "network neighbor list",
     {{"state", "lost"}},
     "There is no such state: 'lost'; --state is one of: none, incomplete, reachable, stale, "
     "delay, "
     "probe, failed, noarp, permanent"},
    {"RouteFamily", "network route list", {{"family", "0"}}, OneOf("family", "[4, 6]")},
    {"DnsKind",
     "network dns list",
     {{"kind", "mail"}},
     "There is no such kind: 'mail'; --kind is one of: server, search, option, sortlist"},
    {"AssignedPort", "network port list", {{"port", "65536"}}, Range("port", "0-65535")},
    {"ActiveIsNoFlag", "network counter list", {{"active", "1"}}, Flag("active", "1")},
};

std::string NameOf(const ::testing::TestParamInfo<Refusal>& refusal) { return refusal.param.name; }

INSTANTIATE_TEST_SUITE_P(System, HostRefusalTest, ::testing::ValuesIn(kSystemRefusals), NameOf);
INSTANTIATE_TEST_SUITE_P(Storage, HostRefusalTest, ::testing::ValuesIn(kStorageRefusals), NameOf);
INSTANTIATE_TEST_SUITE_P(Network, HostRefusalTest, ::testing::ValuesIn(kNetworkRefusals), NameOf);

}  // namespace
}  // namespace Kestrel::Testing

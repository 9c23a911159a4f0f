// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/host/support/Rows.h"
#include "support/ForbiddenCalls.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// `network connection list`, compared with ss and with sockets of the test.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::NotNull;
using ::testing::UnorderedElementsAre;

constexpr const char* kCommand = "network connection list";

/// A socket that closes itself.
class Socket {
 public:
  Socket(int family, int type) : number_(::socket(family, type, 0)) {
    EXPECT_GE(number_, 0) << std::strerror(errno);
  }
  explicit Socket(int number) : number_(number) {}
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket() { ::close(number_); }

  int Get() const { return number_; }

  std::string GetInode() const {
    struct stat status = {};
    EXPECT_EQ(::fstat(number_, &status), 0);
    return std::to_string(status.st_ino);
  }

  Socket& Bind(const std::string& address, unsigned short port) {
    Fill(address, port);
    EXPECT_EQ(::bind(number_, &place_.any, size_), 0) << std::strerror(errno);
    return *this;
  }
  Socket& BindPath(const std::string& path) {
    sockaddr_un local = {};
    local.sun_family = AF_UNIX;
    path.copy(local.sun_path, sizeof(local.sun_path) - 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    EXPECT_EQ(::bind(number_, reinterpret_cast<sockaddr*>(&local), size), 0)
        << std::strerror(errno);
    return *this;
  }
  Socket& Listen() {
    EXPECT_EQ(::listen(number_, 5), 0);
    return *this;
  }
  Socket& Connect(const std::string& address, unsigned short port) {
    EXPECT_EQ(TryToConnect(address, port), 0);
    return *this;
  }
  // Returns 0 or the error.
  int TryToConnect(const std::string& address, unsigned short port) {
    Fill(address, port);
    return ::connect(number_, &place_.any, size_) == 0 ? 0 : errno;
  }
  Socket& ConnectPath(const std::string& path) {
    sockaddr_un remote = {};
    remote.sun_family = AF_UNIX;
    path.copy(remote.sun_path, sizeof(remote.sun_path) - 1);
    EXPECT_EQ(::connect(number_, reinterpret_cast<sockaddr*>(&remote), sizeof(remote)), 0);
    return *this;
  }
  int Accept() const { return ::accept(number_, nullptr, nullptr); }

 private:
  void Fill(const std::string& address, unsigned short port) {
    std::memset(&place_, 0, sizeof(place_));
    if (address.find(':') == std::string::npos) {
      place_.v4.sin_family = AF_INET;
      place_.v4.sin_port = htons(port);
      ::inet_pton(AF_INET, address.c_str(), &place_.v4.sin_addr);
      size_ = sizeof(place_.v4);
    } else {
      place_.v6.sin6_family = AF_INET6;
      place_.v6.sin6_port = htons(port);
      ::inet_pton(AF_INET6, address.c_str(), &place_.v6.sin6_addr);
      size_ = sizeof(place_.v6);
    }
  }

  int number_;
  socklen_t size_ = 0;
  union {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
  } place_ = {};
};

Row RowOf(const std::string& inode, const Parameters& parameters) {
  for (const Row& row : CallRows(kCommand, parameters)) {
    if (row.at("Inode") == inode) {
      return row;
    }
  }
  ADD_FAILURE() << "No socket " << inode;
  return {};
}

std::string ThisProcess() {
  const std::string name = Witness("cat /proc/$PPID/comm");
  return name.substr(0, name.size() - 1) + " (" + std::to_string(::getpid()) + ")";
}

TEST(NetworkConnectionListTest, ListsBothEndsOfAConnection) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNET, [] {
    Witness("ip link set lo up");
    Socket listener(AF_INET, SOCK_STREAM);
    listener.Bind("127.0.0.1", 8080).Listen();
    Socket client(AF_INET, SOCK_STREAM);
    client.Bind("127.0.0.2", 9090).Connect("127.0.0.1", 8080);
    EXPECT_EQ(RowOf(listener.GetInode(), {}).at("Recv-Q"), "1");
    const Socket server(listener.Accept());
    ASSERT_EQ(::send(client.Get(), "hello", 5, 0), 5);

    const std::string user = std::to_string(::getuid());
    EXPECT_EQ(RowOf(listener.GetInode(), {}), (Row{{"Protocol", "tcp"},
                                                   {"Type", "stream"},
                                                   {"Family", "4"},
                                                   {"State", "listen"},
                                                   {"Local", "127.0.0.1:8080"},
                                                   {"Local Address", "127.0.0.1"},
                                                   {"Local Port", "8080"},
                                                   {"Remote", "0.0.0.0:*"},
                                                   {"Remote Address", "0.0.0.0"},
                                                   {"Remote Port", "0"},
                                                   {"Recv-Q", "0"},
                                                   {"Send-Q", "0"},
                                                   {"User Id", user},
                                                   {"Inode", listener.GetInode()},
                                                   {"Processes", ""},
                                                   {"Process Ids", ""}}));
    EXPECT_EQ(RowOf(server.GetInode(), {{"processes", ""}}),
              (Row{{"Protocol", "tcp"},
                   {"Type", "stream"},
                   {"Family", "4"},
                   {"State", "established"},
                   {"Local", "127.0.0.1:8080"},
                   {"Local Address", "127.0.0.1"},
                   {"Local Port", "8080"},
                   {"Remote", "127.0.0.2:9090"},
                   {"Remote Address", "127.0.0.2"},
                   {"Remote Port", "9090"},
                   {"Recv-Q", "5"},
                   {"Send-Q", "0"},
                   {"User Id", user},
                   {"Inode", server.GetInode()},
                   {"Processes", ThisProcess()},
                   {"Process Ids", std::to_string(::getpid())}}));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// ---- comparison with ss

// Maps the names of states in ss to ours.
std::string StateName(const std::string& protocol, const std::string& word) {
  const std::map<std::string, std::string> names = {
      {"ESTAB", protocol == "unix" ? "connected" : "established"},
      {"LISTEN", "listen"},
      {"UNCONN", protocol == "tcp" ? "closed" : "unconnected"},
      {"TIME-WAIT", "time-wait"},
      {"CLOSE-WAIT", "close-wait"},
      {"FIN-WAIT-2", "fin-wait-2"},
      {"SYN-SENT", "syn-sent"}};
  const auto found = names.find(word);
  return found == names.end() ? word : found->second;
}

std::string Attribute(const std::vector<std::string>& words, const std::string& name) {
  for (const std::string& word : words) {
    if (word.rfind(name, 0) == 0) {
      return word.substr(name.size());
    }
  }
  return "0";
}

// Returns the rows of ss -H -O -n -t -u -a -e. The queues of listening sockets are left empty,
// because ss and the command give them different meanings.
std::vector<Row> SsInternetRows() {
  std::vector<Row> rows;
  for (const std::string& line : WitnessLines("ss -H -O -n -t -u -a -e")) {
    const std::vector<std::string> words = WordsIn(line);
    const bool isListening = words.at(1) == "LISTEN";
    // ss writes "*" for the unspecified address of a socket that accepts both families.
    const auto end = [](const std::string& text) {
      return text.rfind("*:", 0) == 0 ? "[::]" + text.substr(1) : text;
    };
    rows.push_back({{"Protocol", words.at(0)},
                    {"State", StateName(words.at(0), words.at(1))},
                    {"Recv-Q", isListening ? "" : words.at(2)},
                    {"Send-Q", isListening ? "" : words.at(3)},
                    {"Local", end(words.at(4))},
                    {"Remote", end(words.at(5))},
                    {"User Id", Attribute(words, "uid:")},
                    {"Inode", Attribute(words, "ino:")}});
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::vector<Row> ListedInternetRows() {
  std::vector<Row> rows = OnlyFields(CallRows(kCommand), {"Protocol", "State", "Recv-Q", "Send-Q",
                                                          "Local", "Remote", "User Id", "Inode"});
  for (Row& row : rows) {
    if (row.at("State") == "listen") {
      row["Recv-Q"].clear();
      row["Send-Q"].clear();
    }
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

TEST(NetworkConnectionListTest, AgreesWithSsAboutInternetSockets) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNET, [] {
    Witness("ip link set lo up");
    Socket four(AF_INET, SOCK_STREAM);
    four.Bind("127.0.0.1", 1001).Listen();
    Socket six(AF_INET6, SOCK_STREAM);
    six.Bind("::1", 1002).Listen();
    Socket both(AF_INET6, SOCK_STREAM);
    both.Bind("::", 1003).Listen();
    Socket mapped(AF_INET, SOCK_STREAM);
    mapped.Connect("127.0.0.1", 1003);
    const Socket mappedServer(both.Accept());
    Socket client(AF_INET6, SOCK_STREAM);
    client.Connect("::1", 1002);
    const Socket server(six.Accept());
    ASSERT_EQ(::send(client.Get(), "abc", 3, 0), 3);
    ASSERT_EQ(::shutdown(server.Get(), SHUT_WR), 0);
    Socket datagrams(AF_INET, SOCK_DGRAM);
    datagrams.Bind("0.0.0.0", 1004);
    Socket sender(AF_INET, SOCK_DGRAM);
    sender.Connect("127.0.0.1", 1004);
    Socket datagrams6(AF_INET6, SOCK_DGRAM);
    datagrams6.Bind("::1", 1005);
    {
      Socket over(AF_INET, SOCK_STREAM);
      over.Connect("127.0.0.1", 1001);
    }
    const Socket closed(four.Accept());

    const Agreement agreement = Compare(ListedInternetRows, SsInternetRows);
    EXPECT_EQ(agreement.witness.size(), 12u);
    EXPECT_EQ(agreement.command, agreement.witness);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// ---- the answers of the kernel, compared with its tables

// Makes the kernel discard every packet for the socket, so that a connection remains half-open.
void DiscardPackets(const Socket& socket) {
  sock_filter discard = BPF_STMT(BPF_RET | BPF_K, 0);
  const sock_fprog program = {1, &discard};
  ASSERT_EQ(::setsockopt(socket.Get(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof(program)), 0)
      << std::strerror(errno);
}

class HalfOpenClient : public Socket {
 public:
  HalfOpenClient(const std::string& address, unsigned short port)
      : Socket(address.find(':') == std::string::npos ? AF_INET : AF_INET6,
               SOCK_STREAM | SOCK_NONBLOCK) {
    DiscardPackets(*this);
    EXPECT_EQ(TryToConnect(address, port), EINPROGRESS);
  }
};

std::vector<std::string> SortedStates(const std::vector<Row>& rows) {
  std::vector<std::string> states;
  for (const Row& row : rows) {
    states.push_back(row.at("Protocol") + row.at("Family") + " " + row.at("State"));
  }
  return Sorted(states);
}

std::vector<std::string> UsersOf(const std::string& state, const std::vector<Row>& rows) {
  std::vector<std::string> users;
  for (const Row& row : rows) {
    if (row.at("State") == state) {
      users.push_back(row.at("User Id"));
    }
  }
  return users;
}

// Opens sockets of many kinds, in states that last. The listening ones belong to another user.
class SocketsOfEveryKind {
 public:
  SocketsOfEveryKind() {
    {
      const PlainUser user;
      four_.emplace(AF_INET, SOCK_STREAM).Bind("127.0.0.1", 1101).Listen();
      both_.emplace(AF_INET6, SOCK_STREAM).Bind("::", 1102).Listen();
    }
    bound_.Bind("127.0.0.1", 1103);
    ConnectAndClose(*four_, "127.0.0.1", 1101);
    waiting_.Connect("127.0.0.1", 1101);
    EXPECT_EQ(::send(waiting_.Get(), "abc", 3, 0), 3);
    mapped_.Connect("127.0.0.1", 1102);
    six_.Connect("::1", 1102);
    datagrams_.Bind("0.0.0.0", 1104);
    sender_.Connect("127.0.0.1", 1104);
    EXPECT_EQ(::send(sender_.Get(), "abc", 3, 0), 3);
    datagrams6_.Bind("::1", 1105);
    halfOpen_.emplace("127.0.0.1", 1101);
    halfOpenMapped_.emplace("127.0.0.1", 1102);
    halfOpen6_.emplace("::1", 1102);
  }

 private:
  // Leaves an entry in the state "time-wait". Such an entry is no longer a socket.
  static void ConnectAndClose(const Socket& listener, const std::string& address,
                              unsigned short port) {
    Socket client(AF_INET, SOCK_STREAM);
    client.Connect(address, port);
    const Socket server(listener.Accept());
    EXPECT_EQ(::shutdown(client.Get(), SHUT_RDWR), 0);
  }

  std::optional<Socket> four_;
  std::optional<Socket> both_;
  Socket bound_{AF_INET, SOCK_STREAM};
  Socket waiting_{AF_INET, SOCK_STREAM};
  Socket mapped_{AF_INET, SOCK_STREAM};
  Socket six_{AF_INET6, SOCK_STREAM};
  Socket datagrams_{AF_INET, SOCK_DGRAM};
  Socket sender_{AF_INET, SOCK_DGRAM};
  Socket datagrams6_{AF_INET6, SOCK_DGRAM};
  std::optional<HalfOpenClient> halfOpen_;
  std::optional<HalfOpenClient> halfOpenMapped_;
  std::optional<HalfOpenClient> halfOpen6_;
};

TEST(NetworkConnectionListTest, TheKernelAndItsTablesAgree) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can become someone else";
  }
  const std::string refusal = RunInNamespaces(CLONE_NEWNET | CLONE_NEWNS, [] {
    Witness("ip link set lo up");
    Call(kCommand);  // loads the plug-in while /proc is mounted
    const SocketsOfEveryKind sockets;
    ASSERT_EQ(::mount("none", "/proc", "tmpfs", 0, nullptr), 0);
    const std::vector<Row> asked = CallRows(kCommand);
    ASSERT_EQ(::umount("/proc"), 0);
    Forbid(SYS_socket, AF_NETLINK, EPROTONOSUPPORT);
    EXPECT_EQ(CallRows(kCommand), asked);  // in the same order
    EXPECT_THAT(
        SortedStates(asked),
        ElementsAre("tcp4 established", "tcp4 established", "tcp4 established", "tcp4 listen",
                    "tcp4 syn-received", "tcp4 syn-sent", "tcp4 syn-sent", "tcp4 time-wait",
                    "tcp6 established", "tcp6 established", "tcp6 established", "tcp6 listen",
                    "tcp6 syn-received", "tcp6 syn-received", "tcp6 syn-sent", "udp4 established",
                    "udp4 unconnected", "udp6 unconnected"));
    EXPECT_THAT(UsersOf("syn-received", asked), ElementsAre("65534", "65534", "65534"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkConnectionListTest, ListsUnixSockets) {
  const ScopedTempDir folder;
  const Parameters parameters = {{"protocol", "unix"}, {"processes", ""}};
  Socket stream(AF_UNIX, SOCK_STREAM);
  stream.BindPath(folder.GetPath("a blank\nand lines")).Listen();
  Socket packets(AF_UNIX, SOCK_SEQPACKET);
  packets.BindPath(std::string("\0hidden", 7));
  int pair[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM, 0, pair), 0);
  const Socket one(pair[0]);
  const Socket two(pair[1]);
  const auto expected = [](const char* type, const char* state, const std::string& path,
                           const Socket& socket, const char* waiting) {
    return Row{{"Protocol", "unix"},
               {"Type", type},
               {"Family", "0"},
               {"State", state},
               {"Local", path},
               {"Local Address", "none"},
               {"Local Port", "0"},
               {"Remote", "none"},
               {"Remote Address", "none"},
               {"Remote Port", "0"},
               {"Recv-Q", "0"},
               {"Send-Q", waiting},
               {"User Id", std::to_string(::getuid())},
               {"Inode", socket.GetInode()},
               {"Processes", ThisProcess()},
               {"Process Ids", std::to_string(::getpid())}};
  };
  EXPECT_EQ(RowOf(stream.GetInode(), parameters),
            expected("stream", "listen", folder.GetPath("a blank\\x0aand lines"), stream, "5"));
  EXPECT_EQ(RowOf(packets.GetInode(), parameters),
            expected("seqpacket", "unconnected", "@hidden", packets, "0"));
  EXPECT_EQ(RowOf(one.GetInode(), parameters), expected("datagram", "connected", "none", one, "0"));
  EXPECT_EQ(RowOf(two.GetInode(), parameters).at("State"), "connected");
}

// The name of a socket looks like another line of /proc/net/unix.
TEST(NetworkConnectionListTest, ANameCannotForgeARow) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNET, [] {
    const std::string name =
        std::string("\0x\n", 3) +
        "0000000000000000: 00000002 00000000 00010000 0001 01 4242 /run/forged";
    Socket socket(AF_UNIX, SOCK_STREAM);
    socket.BindPath(name).Listen();
    ASSERT_THAT(Witness("cat /proc/net/unix"), ::testing::HasSubstr("\n0000000000000000: 00000002 "
                                                                    "00000000 00010000 0001 01 "
                                                                    "4242 /run/forged\n"));
    const std::vector<Row> rows = CallRows(kCommand, {{"protocol", "unix"}});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].at("Inode"), socket.GetInode());
    EXPECT_EQ(rows[0].at("Local"), "@x\\x0a" + name.substr(3));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkConnectionListTest, NamesTheOtherEndOfAUnixConnection) {
  const ScopedTempDir folder;
  const std::string path = folder.GetPath("server");
  Socket listener(AF_UNIX, SOCK_STREAM);
  listener.BindPath(path).Listen();
  Socket client(AF_UNIX, SOCK_STREAM);
  client.ConnectPath(path);
  const Socket server(listener.Accept());
  ASSERT_EQ(::send(client.Get(), "hello", 5, 0), 5);
  const Row clientRow = RowOf(client.GetInode(), {{"protocol", "unix"}});
  EXPECT_EQ(clientRow.at("Local"), "none");
  EXPECT_EQ(clientRow.at("Remote"), path);
  EXPECT_EQ(clientRow.at("State"), "connected");
  const Row serverRow = RowOf(server.GetInode(), {{"protocol", "unix"}});
  EXPECT_EQ(serverRow.at("Local"), path);
  EXPECT_EQ(serverRow.at("Remote"), "none");
  EXPECT_EQ(serverRow.at("Recv-Q"), "5");
}

TEST(NetworkConnectionListTest, TheProcessesOfOthersAreUnknown) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can become someone else";
  }
  const std::string refusal = RunInNamespaces(CLONE_NEWNET, [] {
    std::string inode;
    pid_t holder = 0;
    {
      Socket listener(AF_INET, SOCK_STREAM);
      inode = listener.Bind("0.0.0.0", 1001).Listen().GetInode();
      holder = ::fork();
      if (holder == 0) {
        ::pause();
        ::_exit(0);
      }
    }
    EXPECT_EQ(RowOf(inode, {{"processes", ""}}).at("Process Ids"), std::to_string(holder));
    {
      const PlainUser user;
      const Row row = RowOf(inode, {{"processes", ""}});
      EXPECT_EQ(row.at("Processes"), "unknown");
      EXPECT_EQ(row.at("Process Ids"), "");
      EXPECT_EQ(RowOf(inode, {}).at("Processes"), "") << "without --processes";
    }
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

std::vector<Row> SsLocalRows() {
  std::vector<Row> rows;
  const std::map<std::string, std::string> types = {
      {"u_str", "stream"}, {"u_dgr", "datagram"}, {"u_seq", "seqpacket"}};
  for (const std::string& line : WitnessLines("ss -H -O -n -x -a")) {
    const std::vector<std::string> words = WordsIn(line);
    rows.push_back({{"Inode", words.at(5)},
                    {"Type", types.at(words.at(0))},
                    {"State", StateName("unix", words.at(1))},
                    {"Recv-Q", words.at(2)},
                    {"Send-Q", words.at(3)},
                    {"Local", words.at(4) == "*" ? "none" : words.at(4)}});
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

TEST(NetworkConnectionListTest, AgreesWithSsAboutUnixSockets) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNET, [] {
    const ScopedTempDir folder;
    Socket stream(AF_UNIX, SOCK_STREAM);
    stream.BindPath(folder.GetPath("stream")).Listen();
    Socket datagrams(AF_UNIX, SOCK_DGRAM);
    datagrams.BindPath(folder.GetPath("datagrams"));
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
    const Socket one(pair[0]);
    const Socket two(pair[1]);
    const Agreement agreement = Compare(
        [] {
          std::vector<Row> rows =
              OnlyFields(CallRows(kCommand, {{"protocol", "unix"}}),
                         {"Inode", "Type", "State", "Recv-Q", "Send-Q", "Local"});
          std::sort(rows.begin(), rows.end());
          return rows;
        },
        SsLocalRows);
    EXPECT_EQ(agreement.witness.size(), 4u);
    EXPECT_EQ(agreement.command, agreement.witness);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkConnectionListTest, FiltersChooseAmongTheSockets) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNET, [] {
    Witness("ip link set lo up");
    Socket four(AF_INET, SOCK_STREAM);
    four.Bind("127.0.0.1", 1001).Listen();
    Socket six(AF_INET6, SOCK_DGRAM);
    six.Bind("::1", 1002);
    Socket client(AF_INET, SOCK_STREAM);
    client.Bind("127.0.0.1", 1003).Connect("127.0.0.1", 1001);
    Socket local(AF_UNIX, SOCK_STREAM);
    local.BindPath(std::string("\0mine", 5));
    const Socket server(four.Accept());
    const auto ends = [](const Parameters& parameters) {
      return CallColumn(kCommand, "Local", parameters);
    };
    const std::string listening = "127.0.0.1:1001";
    EXPECT_THAT(ends({}),
                UnorderedElementsAre(listening, listening, "127.0.0.1:1003", "[::1]:1002"));
    EXPECT_THAT(ends({{"protocol", "udp"}}), ElementsAre("[::1]:1002"));
    EXPECT_THAT(ends({{"p", "unix"}, {"p", "udp"}}), UnorderedElementsAre("[::1]:1002", "@mine"));
    EXPECT_THAT(ends({{"all", ""}}), UnorderedElementsAre(listening, listening, "127.0.0.1:1003",
                                                          "[::1]:1002", "@mine"));
    EXPECT_THAT(ends({{"family", "6"}}), ElementsAre("[::1]:1002"));
    EXPECT_THAT(ends({{"state", "listen"}}), ElementsAre(listening));
    EXPECT_THAT(ends({{"s", "listen"}, {"s", "unconnected"}}),
                UnorderedElementsAre(listening, "[::1]:1002"));
    EXPECT_THAT(ends({{"port", "1003"}}), UnorderedElementsAre(listening, "127.0.0.1:1003"));
    EXPECT_THAT(ends({{"P", "1002"}, {"P", "1003"}}),
                UnorderedElementsAre(listening, "127.0.0.1:1003", "[::1]:1002"));
    EXPECT_THAT(ends({{"port", "9"}}), IsEmpty());
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkConnectionListTest, MissingTablesOfTheKernelAreAnErrorOnlyIfNetlinkFails) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    Call(kCommand);  // loads the plug-in while /proc is mounted
    ASSERT_EQ(::mount("none", "/proc", "tmpfs", 0, nullptr), 0);
    EXPECT_THAT(Call(kCommand, {{"all", ""}}).GetErrors(), IsEmpty());
    EXPECT_THAT(Call(kCommand, {{"all", ""}, {"processes", ""}}).GetValue(), NotNull());
    Forbid(SYS_socket, AF_NETLINK, EPROTONOSUPPORT);
    EXPECT_THAT(Call(kCommand).GetErrors(),
                ElementsAre("Unable to read /proc/net/tcp: No such file or directory"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkConnectionListTest, RejectsInvalidPortsProtocolsAndStates) {
  EXPECT_THAT(Call(kCommand, {{"port", "0"}, {"port", "65536"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'port'. Expected integer in the "
                          "range 1-65535",
                          "Invalid data constraint for parameter 'port'. Expected integer in the "
                          "range 1-65535"));
  EXPECT_THAT(Call(kCommand, {{"protocol", "icmp"}, {"state", "open"}}).GetErrors(),
              ElementsAre("There is no such protocol: 'icmp'; --protocol is one of: tcp, udp, unix",
                          "There is no such state: 'open'; --state is one of: listen, established, "
                          "syn-sent, syn-received, fin-wait-1, fin-wait-2, close-wait, last-ack, "
                          "closing, time-wait, closed, connected, unconnected"));
  EXPECT_THAT(Call(kCommand, {{"all", ""}, {"protocol", "tcp"}}).GetErrors(),
              ElementsAre("--all lists all protocols, so --protocol cannot be used too."));
}

}  // namespace
}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/InternetSockets.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkParameters.h"
#include "plugins/host/network/SocketOwners.h"
#include "plugins/host/network/UnixSockets.h"
#include "plugins/host/network/WordFilter.h"

namespace Kestrel::Host {
namespace {

constexpr char kUnix[] = "unix";
constexpr long kFamilyOfUnix = 0;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkConnection")
          .String("Protocol", "tcp, udp or unix.")
          .String("Type", "The type of the socket: stream, datagram or seqpacket.")
          .Int("Family", "The version of the Internet protocol: 4 or 6; 0 for unix.")
          .String("State", "The state of the connection: listen, established and others.")
          .Int("Recv-Q",
               "How many bytes were received but not read; of a listening socket, how "
               "many connections wait.")
          .Int("Send-Q",
               "How many bytes were sent but not acknowledged; of a listening Unix "
               "socket, how many connections may wait.")
          .String("Local", "The local address with its port; for unix, the path or none.")
          .String("Local Address", "The local address; none for unix.")
          .Int("Local Port", "The local port; 0 for unix.")
          .String("Remote", "The remote address with its port; for unix, the path or none.")
          .String("Remote Address", "The remote address; none for unix.")
          .Int("Remote Port", "The remote port; 0 for none.")
          .Int("User Id", "The user who owns the socket; -1 if the kernel does not report it.")
          .Int("Inode", "The inode of the socket; 0 if no process has it open.")
          .Strings("Processes",
                   "The processes that have it open, with --processes: name and number, or unknown "
                   "if they belong to others.")
          .Ints("Process Ids", "The numbers of these processes.");
  return shape;
}

const WordSet& Protocols() {
  static const WordSet words = WordSet().Word("tcp").Word("udp").Word("unix");
  return words;
}

// The numbers are those of TCP.
const WordSet& States() {
  static constexpr NumberName kTcpStates[] = {
      {10, "listen"},    {1, "established"}, {2, "syn-sent"},   {3, "syn-received"},
      {4, "fin-wait-1"}, {5, "fin-wait-2"},  {8, "close-wait"}, {9, "last-ack"},
      {11, "closing"},   {6, "time-wait"},   {7, "closed"}};
  static const WordSet words = WordSet()
                                   .Numbered(kTcpStates)
                                   .Word("connected")
                                   .Word("unconnected")
                                   .Alias("listening", "listen")
                                   .Alias("estab", "established")
                                   .Alias("syn-recv", "syn-received")
                                   .Alias("unconn", "unconnected");
  return words;
}

void SetOwners(const Socket& socket, const SocketOwners& owners, MetaObj::MetaStruct& row) {
  std::vector<std::string> names;
  std::vector<long> ids;
  const auto found = owners.byInode.find(socket.inode);
  if (found != owners.byInode.end()) {
    for (const SocketOwner& owner : found->second) {
      names.push_back(owner.name + " (" + std::to_string(owner.processId) + ")");
      ids.push_back(owner.processId);
    }
  } else if (socket.inode != 0 && !owners.isComplete) {
    names.emplace_back("unknown");
  }
  row.SetField("Processes", SanitizedList(names));
  row.SetField("Process Ids", ids);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Socket& socket, const SocketOwners& owners) {
  const bool isUnix = socket.protocol == kUnix;
  auto result = Shape().NewStruct();
  result->SetField("Protocol", socket.protocol);
  result->SetField("Type", socket.type);
  result->SetField("Family", socket.family);
  result->SetField("State", socket.state);
  result->SetField("Recv-Q", socket.receiveQueue);
  result->SetField("Send-Q", socket.sendQueue);
  result->SetField("Local",
                   SanitizedText(TextOrNone(isUnix ? socket.path : socket.local.ToString())));
  result->SetField("Local Address", TextOrNone(socket.local.address));
  result->SetField("Local Port", socket.local.port);
  result->SetField(
      "Remote", SanitizedText(TextOrNone(isUnix ? socket.remotePath : socket.remote.ToString())));
  result->SetField("Remote Address", TextOrNone(socket.remote.address));
  result->SetField("Remote Port", socket.remote.port);
  result->SetField("User Id", socket.userId);
  result->SetField("Inode", socket.inode);
  SetOwners(socket, owners, *result);
  return result;
}

/// Selects the sockets that the user asks for.
class SocketFilter {
 public:
  SocketFilter(const CallSpec::Input& input, CallSpec::Output& output)
      : families_(input, "family"),
        ports_(input, "port"),
        protocols_(input, "protocol", Protocols(), output),
        states_(input, "state", States(), output),
        isEveryProtocolListed_(input.IsFlagSet("all")) {
    if (isEveryProtocolListed_ && input.HasParameter("protocol")) {
      output.AddErrorMessage("--all lists all protocols, so --protocol cannot be used too.");
    }
  }

  bool AcceptsProtocol(const std::string& protocol) const {
    return isEveryProtocolListed_ ||
           (protocols_.IsGiven() ? protocols_.Accepts(protocol) : protocol != kUnix);
  }

  bool AcceptsFamily(long family) const { return families_.Accepts(family); }

  bool Accepts(const Socket& socket) const {
    return states_.Accepts(socket.state) &&
           ports_.AcceptsAnyOf({socket.local.port, socket.remote.port});
  }

 private:
  IntFilter families_;
  IntFilter ports_;
  WordFilter protocols_;
  WordFilter states_;
  bool isEveryProtocolListed_;
};

class NetworkConnectionList final : public ListCommand {
 public:
  NetworkConnectionList()
      : ListCommand("List connections and listening sockets.", Shape,
                    "The sockets, sorted by protocol.") {
    ShowColumns("Protocol,State,Recv-Q,Send-Q,Local,Remote", {{"wrap-last", "true"}});
    AddExample("", "List TCP and UDP sockets with their queues");
    AddExample("--state listen --processes", "List listening sockets with their processes");
    AddExample("--protocol tcp --port 22 --port 443", "List the connections of two ports");
    AddExample("--protocol unix", "List Unix sockets");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    Parameter("protocol", CallSpec::StringList,
              "List only this protocol: tcp, udp or unix; the default is tcp and udp.")
        .Short("p")
        .AddTo(spec);
    Parameter("state", CallSpec::StringList,
              "List only sockets in this state: listen, established, syn-sent, syn-received, "
              "fin-wait-1, fin-wait-2, close-wait, last-ack, closing, time-wait, closed, connected "
              "(unix), unconnected (udp, unix).")
        .Short("s")
        .AddTo(spec);
    Parameter("port", CallSpec::IntList,
              "List only sockets with this local or remote port; %ENUM%.")
        .Short("P")
        .Between(1, 65535)
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List all protocols.").Short("a").AddTo(spec);
    Parameter("processes", CallSpec::Flag,
              "Find the processes that have each socket open; only the superuser finds those of "
              "other users.")
        .Short("w")
        .AddTo(spec);
  }

  std::string GetColumns(const CallSpec::Input& input) const override {
    return input.IsFlagSet("processes") ? "Protocol,State,Local,Remote,Processes"
                                        : ListCommand::GetColumns(input);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const SocketFilter filter(input, output);
    if (output.HasError()) {
      return;
    }
    const std::vector<Socket> sockets = ReadSockets(filter);
    const SocketOwners owners =
        input.IsFlagSet("processes") ? ReadSocketOwners(kProc) : SocketOwners();
    for (const Socket& socket : sockets) {
      if (filter.Accepts(socket)) {
        rows.Add(ToStruct(socket, owners));
      }
    }
  }

  static std::vector<Socket> ReadSockets(const SocketFilter& filter) {
    std::vector<Socket> sockets;
    for (const char* const protocol : {"tcp", "udp"}) {
      for (const long family : {4, 6}) {
        if (filter.AcceptsProtocol(protocol) && filter.AcceptsFamily(family)) {
          Append(ReadInternetSockets(std::string(kProc) + "/net", protocol, family), sockets);
        }
      }
    }
    if (filter.AcceptsProtocol(kUnix) && filter.AcceptsFamily(kFamilyOfUnix)) {
      Append(ReadUnixSockets(), sockets);
    }
    return sockets;
  }

  static void Append(std::vector<Socket> more, std::vector<Socket>& sockets) {
    std::move(more.begin(), more.end(), std::back_inserter(sockets));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkConnectionList() {
  return std::make_shared<NetworkConnectionList>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <map>
#include <string>
#include <vector>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkParameters.h"
#include "plugins/host/network/SocketTables.h"

namespace Kestrel::Host {
namespace {

using Owners = std::map<long, std::vector<long>>;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkConnection")
          .String("Protocol", "tcp, udp or unix, for sockets of this machine's own.")
          .String("Type", "What the socket carries: stream, datagram or seqpacket.")
          .Int("Family", "The version of the Internet protocol: 4 or 6; 0 for unix.")
          .String("State", "The state of the connection: listen, established and others.")
          .String("Local", "This end, with its port; a path for unix.")
          .String("Local Address", "The address of this end; empty for unix.")
          .Int("Local Port", "The port of this end; 0 for unix.")
          .String("Remote", "The other end, with its port; empty for unix.")
          .String("Remote Address", "The address of the other end; empty for unix.")
          .Int("Remote Port", "The port of the other end; 0 while there is none.")
          .Int("Receive Queue", "How many bytes have come and were not read.")
          .Int("Send Queue", "How many bytes were sent and not acknowledged.")
          .Int("User Id", "The user who made the socket; -1 for unix.")
          .Int("Inode", "The socket's number; 0 once no process holds it.")
          .Ints("Processes", "The processes that hold it, where they were asked for.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Socket& socket, const Owners& owners) {
  const bool isUnix = socket.protocol == "unix";
  const auto found = owners.find(socket.inode);
  auto result = Shape().NewStruct();
  result->SetField("Protocol", socket.protocol);
  result->SetField("Type", socket.type);
  result->SetField("Family", socket.family);
  result->SetField("State", socket.state);
  result->SetField("Local", SanitizedText(isUnix ? socket.path : socket.local.ToText()));
  result->SetField("Local Address", socket.local.address);
  result->SetField("Local Port", socket.local.port);
  result->SetField("Remote", socket.remote.ToText());
  result->SetField("Remote Address", socket.remote.address);
  result->SetField("Remote Port", socket.remote.port);
  result->SetField("Receive Queue", socket.receiveQueue);
  result->SetField("Send Queue", socket.sendQueue);
  result->SetField("User Id", socket.userId);
  result->SetField("Inode", socket.inode);
  result->SetField("Processes", found == owners.end() ? std::vector<long>() : found->second);
  return result;
}

class NetworkConnectionList final : public ListCommand {
 public:
  NetworkConnectionList()
      : ListCommand("List connections and sockets that wait for one.", Shape,
                    "The sockets, protocol by protocol.") {
    ShowColumns("Protocol,State,Local,Remote,Processes", {{"wrap-last", "true"}});
    AddExample("--state listen --processes", "List what waits for connections, and who does");
    AddExample("--protocol tcp --port 22 --port 443", "List what goes through two ports");
    AddExample("--protocol unix", "List the sockets of this machine's own");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    Parameter("protocol", CallSpec::StringList,
              "List this protocol only; tcp and udp unless given:%FULLENUM%")
        .Short("p")
        .OneOf({{"tcp", "streams between machines"},
                {"udp", "datagrams between machines"},
                {"unix", "sockets of this machine's own"}})
        .AddTo(spec);
    Parameter("state", CallSpec::StringList, "List sockets in this state only:%FULLENUM%")
        .Short("s")
        .OneOf({{"listen", "waits for connections"},
                {"established", "is connected"},
                {"unconnected", "has no other end"},
                {"connected", "is connected (unix)"},
                {"connecting", "is about to be connected (unix)"},
                {"disconnecting", "is about to be closed (unix)"},
                {"syn-sent", "has asked for a connection"},
                {"syn-received", "was asked for a connection"},
                {"fin-wait-1", "has said that it sends no more"},
                {"fin-wait-2", "sends no more, the other end still may"},
                {"close-wait", "the other end sends no more"},
                {"last-ack", "waits for the last word of the other end"},
                {"closing", "both ends say that they send no more"},
                {"time-wait", "is over, late packets are waited for"},
                {"closed", "is over"}})
        .AddTo(spec);
    Parameter("port", CallSpec::IntList, "List sockets only with this port at either end; %ENUM%.")
        .Short("P")
        .Between(1, 65535)
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List every protocol.").Short("a").AddTo(spec);
    Parameter("processes", CallSpec::Flag,
              "Look for the processes that hold each socket; those of other users are found by "
              "the superuser only.")
        .Short("w")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const IntFilter families(input, "family");
    const IntFilter ports(input, "port");
    const StringFilter protocols(input, "protocol");
    const StringFilter states(input, "state");
    const bool isEverythingListed = input.IsFlagSet("all");
    const std::string proc = kProc;
    const Owners owners = input.IsFlagSet("processes") ? ReadSocketOwners(proc) : Owners();
    for (const Socket& socket : ReadSockets(proc + "/net")) {
      const bool isProtocolChosen =
          protocols.IsGiven() ? protocols.Accepts(socket.protocol) : socket.protocol != "unix";
      if ((isEverythingListed || isProtocolChosen) && families.Accepts(socket.family) &&
          states.Accepts(socket.state) &&
          ports.AcceptsAnyOf({socket.local.port, socket.remote.port})) {
        rows.Add(ToStruct(socket, owners));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkConnectionList() {
  return std::make_shared<NetworkConnectionList>();
}

}  // namespace Kestrel::Host

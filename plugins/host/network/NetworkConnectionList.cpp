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
          .String("Protocol", "tcp, udp or unix.")
          .String("Type", "The type of the socket: stream, datagram or seqpacket.")
          .Int("Family", "The version of the Internet protocol: 4 or 6; 0 for unix.")
          .String("State", "The state of the connection: listen, established and others.")
          .String("Local", "The local address with its port; the path for unix.")
          .String("Local Address", "The local address; empty for unix.")
          .Int("Local Port", "The local port; 0 for unix.")
          .String("Remote", "The remote address with its port; empty for unix.")
          .String("Remote Address", "The remote address; empty for unix.")
          .Int("Remote Port", "The remote port; 0 for none.")
          .Int("Receive Queue", "How many bytes have been received but not read.")
          .Int("Send Queue", "How many bytes have been sent but not acknowledged.")
          .Int("User Id", "The user who owns the socket; -1 for unix.")
          .Int("Inode", "The inode of the socket; 0 if no process has it open.")
          .Ints("Processes", "The processes that have it open, with --processes.");
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
      : ListCommand("List connections and listening sockets.", Shape,
                    "The sockets, sorted by protocol.") {
    ShowColumns("Protocol,State,Local,Remote,Processes", {{"wrap-last", "true"}});
    AddExample("--state listen --processes", "List listening sockets with their processes");
    AddExample("--protocol tcp --port 22 --port 443", "List the connections of two ports");
    AddExample("--protocol unix", "List Unix sockets");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    Parameter("protocol", CallSpec::StringList,
              "List only this protocol; the default is tcp and udp:%FULLENUM%")
        .Short("p")
        .OneOf({{"tcp", "streams"}, {"udp", "datagrams"}, {"unix", "Unix sockets"}})
        .AddTo(spec);
    Parameter("state", CallSpec::StringList, "List only sockets in this state:%FULLENUM%")
        .Short("s")
        .OneOf({{"listen", "waits for connections"},
                {"established", "is connected"},
                {"unconnected", "has no remote end"},
                {"connected", "is connected (unix)"},
                {"connecting", "is being connected (unix)"},
                {"disconnecting", "is being closed (unix)"},
                {"syn-sent", "has requested a connection"},
                {"syn-received", "has received a request for a connection"},
                {"fin-wait-1", "has closed its side"},
                {"fin-wait-2", "has closed its side, which is acknowledged"},
                {"close-wait", "the remote end has closed its side"},
                {"last-ack", "waits for the last acknowledgement"},
                {"closing", "both ends have closed their side"},
                {"time-wait", "is closed, but late packets may arrive"},
                {"closed", "is closed"}})
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

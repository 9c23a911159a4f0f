// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkAddressShape.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {
namespace {

class NetworkAddressList final : public ListCommand {
 public:
  NetworkAddressList()
      : ListCommand("List the addresses of the network interfaces.", NetworkAddressShape,
                    "The addresses, sorted by interface.") {
    ShowColumns("Interface,CIDR,Scope,Peer", {{"wrap-last", "true"}});
    AddMetaData("complete:interface", kInterfaceCompletion);
    AddExample("", "List every address");
    AddExample("--interface eth0 --family 6", "List the IPv6 addresses of one interface");
    AddExample("--scope global", "List the addresses that others can reach");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    AddInterfaceParameter(spec);
    Parameter("scope", CallSpec::StringList,
              "List only addresses that are valid so far: global (everywhere), site, link, host "
              "(on this machine), another name in rt_scopes, or a number.")
        .Short("s")
        .AddTo(spec);
    Parameter("prefix-length", CallSpec::Int,
              "List only addresses with this prefix length; %ENUM%.")
        .Short("p")
        .Between(0, 128)
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const IntFilter families(input, "family");
    const IntFilter prefixLengths(input, "prefix-length");
    const NameFilter interfaces(input, "interface");
    const NumberTable scopeNames = ReadRoutingNames().scopes;
    const NumberFilter scopes(input, "scope", scopeNames, output);
    if (output.HasError()) {
      return;
    }
    const auto linkNames = LinkNames(ReadLinks());
    for (const NetworkAddress& address : ReadAddresses()) {
      if (families.Accepts(address.family) && prefixLengths.Accepts(address.prefixLength) &&
          scopes.Accepts(address.scope) &&
          interfaces.Accepts(LinkName(linkNames, address.interfaceIndex))) {
        rows.Add(ToStruct(address, linkNames, scopeNames));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkAddressList() {
  return std::make_shared<NetworkAddressList>();
}

}  // namespace Kestrel::Host

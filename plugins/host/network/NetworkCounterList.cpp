// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkCounter")
          .String("Interface", "The interface.")
          .Size("RX", "How much it received.")
          .Int("RX Packets", "How many packets it received.")
          .Int("RX Errors", "How many damaged packets it received.")
          .Int("RX Dropped", "How many received packets were dropped.")
          .Size("TX", "How much it sent.")
          .Int("TX Packets", "How many packets it sent.")
          .Int("TX Errors", "How many packets it failed to send.")
          .Int("TX Dropped", "How many packets were dropped instead of sent.")
          .Int("Trouble", "The sum of its errors and dropped packets.");
  return shape;
}

long Trouble(const LinkTraffic& traffic) { return ClampedSum(traffic.errors, traffic.dropped); }

long Trouble(const NetworkLink& link) {
  return ClampedSum(Trouble(link.received), Trouble(link.transmitted));
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkLink& link) {
  auto result = Shape().NewStruct();
  result->SetField("Interface", SanitizedText(link.name));
  SetSize(*result, "RX", link.received.bytes);
  result->SetField("RX Packets", link.received.packets);
  result->SetField("RX Errors", link.received.errors);
  result->SetField("RX Dropped", link.received.dropped);
  SetSize(*result, "TX", link.transmitted.bytes);
  result->SetField("TX Packets", link.transmitted.packets);
  result->SetField("TX Errors", link.transmitted.errors);
  result->SetField("TX Dropped", link.transmitted.dropped);
  result->SetField("Trouble", Trouble(link));
  return result;
}

class NetworkCounterList final : public ListCommand {
 public:
  NetworkCounterList()
      : ListCommand("List the traffic of the network interfaces.", Shape,
                    "The counters since each interface was created, sorted by index.") {
    ShowColumns("Interface,RX Bytes,RX Packets,TX Bytes,TX Packets,Trouble");
    AddMetaData("complete:interface", kInterfaceCompletion);
    AddExample("", "List the counters of every interface");
    AddExample("--active", "List the interfaces that had any traffic");
    AddExample("--trouble", "List the interfaces that lost packets, and how");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddInterfaceParameter(spec);
    Parameter("active", CallSpec::Flag, "List only interfaces that have sent or received packets.")
        .Short("a")
        .AddTo(spec);
    Parameter("trouble", CallSpec::Flag, "List only interfaces with errors or dropped packets.")
        .Short("t")
        .AddTo(spec);
  }

  std::string GetColumns(const CallSpec::Input& input) const override {
    return input.IsFlagSet("trouble") ? "Interface,RX Errors,RX Dropped,TX Errors,TX Dropped"
                                      : ListCommand::GetColumns(input);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter interfaces(input, "interface");
    const bool mustBeActive = input.IsFlagSet("active");
    const bool mustHaveTrouble = input.IsFlagSet("trouble");
    for (const NetworkLink& link : ReadLinks()) {
      const bool isActive = link.received.packets > 0 || link.transmitted.packets > 0;
      if (interfaces.Accepts(link.name) && (isActive || !mustBeActive) &&
          (Trouble(link) > 0 || !mustHaveTrouble)) {
        rows.Add(ToStruct(link));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkCounterList() {
  return std::make_shared<NetworkCounterList>();
}

}  // namespace Kestrel::Host

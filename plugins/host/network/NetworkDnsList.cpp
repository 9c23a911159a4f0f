// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/ResolverSettings.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("DnsSetting")
          .String("Kind", "What it is: server, search (a domain to search), option or sortlist.")
          .String("Value", "The address, the domain or the option.")
          .Int("Position", "Its place among those of its kind in its file, from 1.")
          .Bool("Used", "Whether the C library uses it: it asks the first three servers only.")
          .String("Source", "The file with the setting, or default without one.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const ResolverSetting& setting) {
  auto result = Shape().NewStruct();
  result->SetField("Kind", setting.kind);
  result->SetField("Value", SanitizedText(setting.value));
  result->SetField("Position", setting.position);
  result->SetField("Used", setting.isUsed);
  result->SetField("Source", setting.source);
  return result;
}

class NetworkDnsList final : public ListCommand {
 public:
  NetworkDnsList()
      : ListCommand("List the servers, domains and options for resolving names.", Shape,
                    "The settings, in the order of their file.") {
    ShowColumns("Kind,Value,Used,Source", {{"wrap-last", "true"}});
    AddExample("", "List all settings");
    AddExample("--kind server", "List the servers that are asked");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("kind", CallSpec::StringList,
              "List only settings of this kind: server, search, option or sortlist.")
        .Short("k")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const WordFilter kinds(input, "kind", ResolverSettingKinds(), output);
    if (output.HasError()) {
      return;
    }
    for (const ResolverSetting& setting : ReadResolverSettings()) {
      if (kinds.Accepts(setting.kind)) {
        rows.Add(ToStruct(setting));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkDnsList() { return std::make_shared<NetworkDnsList>(); }

}  // namespace Kestrel::Host

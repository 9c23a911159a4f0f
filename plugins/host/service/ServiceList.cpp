// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/service/ServiceCommands.h"
#include "plugins/host/service/ServiceManager.h"
#include "plugins/host/service/ServiceParameters.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Service")
          .String("Name", "The name, without .service at its end.")
          .String("State",
                  "What it does: running, or well according to its script; exited, when its work "
                  "is done and it counts as active; "
                  "reloading, refreshing, activating, deactivating, maintenance, failed or "
                  "stopped; not-found, when another unit refers to it and it is not installed; "
                  "template, from which services are made; alias, another name of one of them; "
                  "unknown, when it does not say.")
          .String("Sub State",
                  "systemd's more detailed word, such as auto-restart; \"none\" when it is not "
                  "loaded and without systemd.")
          .String("Boot State",
                  "Whether it starts with the machine: enabled, disabled, static (started by "
                  "others), masked (cannot be started) and other words of systemd; \"none\" when "
                  "it has no file.")
          .String("Source", "Who manages it: systemd, or a script in init.d.")
          .String("Description",
                  "What it is; \"none\" when it is not recorded, and for one of systemd that is "
                  "not loaded.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Service& service) {
  auto row = Shape().NewStruct();
  row->SetField("Name", SanitizedText(service.name));
  row->SetField("State", SanitizedText(service.state));
  row->SetField("Sub State", SanitizedText(TextOr("none", service.subState)));
  row->SetField("Boot State", SanitizedText(TextOr("none", service.bootState)));
  row->SetField("Source", SanitizedText(service.source));
  row->SetField("Description", SanitizedText(TextOr("none", service.description)));
  return row;
}

class ServiceList final : public ListCommand {
 public:
  ServiceList()
      : ListCommand("List the services and what they do.", Shape,
                    "The services in the order of their names.") {
    ShowColumns("Name,State,Description", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "service.list Name");
    AddExample("", "List all services");
    AddExample("--state failed", "List the services that failed");
    AddExample("--name 'ssh*' --name cron", "List services by their names");
    AddExample("--state running --sort 'Boot State'",
               "List the running services, those together that start in the same way");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    UnitNames::DeclareParameters(spec, "services");
    ServiceStates::DeclareParameter(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const UnitNames names(input, ".service");
    const ServiceStates states(input, output);
    if (output.HasError()) {
      return;
    }
    for (const Service& service : ServiceManager().List()) {
      if (states.Accept(service.state) && names.Accept(service.name)) {
        rows.Add(ToStruct(service));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewServiceList() { return std::make_shared<ServiceList>(); }

}  // namespace Kestrel::Host

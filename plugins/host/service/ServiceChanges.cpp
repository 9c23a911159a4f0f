// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The commands that change a service. They differ only in the word that they pass to its manager,
// and in which changes they show.

#include <string>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/service/ServiceCommands.h"
#include "plugins/host/service/ServiceManager.h"
#include "plugins/host/service/ServiceParameters.h"

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kDefaultSeconds = 120;
constexpr std::int64_t kMaxSeconds = 3600;
constexpr char kNone[] = "none";
constexpr char kStateFields[] =
    "State Before,State After,Main Process Before,Main Process After,Message";
constexpr char kBootStateFields[] = "Boot State Before,Boot State After,State After,Message";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("ServiceChange")
          .String("Name", "The name of the service, without .service at its end.")
          .String("Action", "What was done: start, stop, restart, enable or disable.")
          .String("State Before", "What it did before, in the words of service list.")
          .String("State After", "What it does now.")
          .String("Boot State Before",
                  "Whether it started with the machine, in the words of service list; \"none\" "
                  "when it has no file.")
          .String("Boot State After", "Whether it starts with the machine now.")
          .Int("Main Process Before", "The number of its main process; 0 when there was none.")
          .Int("Main Process After", "The number of its main process now; 0 when there is none.")
          .String("Message",
                  "What its manager says about the change; \"none\" when it says nothing.");
  return shape;
}

// Sets the three fields whose names end with `when`.
void SetState(const ServiceDetails& details, const std::string& when, MetaObj::MetaStruct& result) {
  const Service& service = details.service;
  result.SetField("State " + when, SanitizedText(service.state));
  result.SetField("Boot State " + when, SanitizedText(TextOr(kNone, service.bootState)));
  result.SetField("Main Process " + when, static_cast<long>(details.mainProcess));
}

class ServiceChangeCommand final : public HostCommand {
 public:
  ServiceChangeCommand(const char* action, const char* description, const char* fields,
                       const char* example)
      : HostCommand(description), action_(action) {
    ShowAsLines("ServiceChange", fields, {{"header:ServiceChange", "Service %Name%"}});
    AddMetaData("changes", "true");
    AddMetaData("complete:name", "service.list Name");
    AddExample("--name ssh", example);
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddServiceName(spec);
    Parameter("timeout", CallSpec::Int,
              "How many seconds to wait for the change, %ENUM%; the default is 120.")
        .Short("t")
        .Between(1, kMaxSeconds)
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The service before and after the change.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::chrono::seconds limit(
        input.HasParameter("timeout") ? input.GetParameterInt("timeout") : kDefaultSeconds);
    const ServiceChange change =
        ServiceManager().Change(action_, input.GetParameter("name"), limit);
    const auto result = Shape().NewStruct();
    result->SetField("Name", SanitizedText(change.before.service.name));
    result->SetField("Action", SanitizedText(action_));
    SetState(change.before, "Before", *result);
    SetState(change.after, "After", *result);
    result->SetField("Message", SanitizedText(TextOr(kNone, change.message)));
    output.SetRootObject(result);
  }

  const char* const action_;
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewServiceDisable() {
  return std::make_shared<ServiceChangeCommand>(
      "disable", "Keep a service from starting with the machine; it is not stopped.",
      kBootStateFields, "Make the server for remote logins no longer start with the machine");
}

std::shared_ptr<AutoCli::Command> NewServiceEnable() {
  return std::make_shared<ServiceChangeCommand>(
      "enable", "Make a service start with the machine; it is not started now.", kBootStateFields,
      "Make the server for remote logins start with the machine");
}

std::shared_ptr<AutoCli::Command> NewServiceRestart() {
  return std::make_shared<ServiceChangeCommand>(
      "restart", "Stop a service, if it runs, and start it.", kStateFields,
      "Restart the server for remote logins");
}

std::shared_ptr<AutoCli::Command> NewServiceStart() {
  return std::make_shared<ServiceChangeCommand>("start", "Start a service.", kStateFields,
                                                "Start the server for remote logins");
}

std::shared_ptr<AutoCli::Command> NewServiceStop() {
  return std::make_shared<ServiceChangeCommand>("stop", "Stop a service.", kStateFields,
                                                "Stop the server for remote logins");
}

}  // namespace Kestrel::Host

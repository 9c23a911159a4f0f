// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/service/ServiceCommands.h"
#include "plugins/host/service/ServiceLog.h"
#include "plugins/host/service/ServiceManager.h"
#include "plugins/host/service/ServiceName.h"
#include "plugins/host/service/ServiceParameters.h"

namespace Kestrel::Host {
namespace {

constexpr char kNone[] = "none";
constexpr char kUnknown[] = "unknown";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("ServiceDetails")
          .String("Name", "The name, without .service at its end.")
          .String("State", "What it does, in the words of service list.")
          .String("Sub State", "systemd's more detailed word; \"none\" without systemd.")
          .String("Boot State",
                  "Whether it starts with the machine, in the words of service list; \"none\" "
                  "when it has no file.")
          .String("Load State",
                  "How systemd could read its unit: loaded, masked, bad-setting, error and others; "
                  "\"none\" without systemd.")
          .Int("Main Process", "The number of its main process; 0 when there is none.")
          .String("Since",
                  "When it entered its state; \"unknown\" if that never happened or is not "
                  "recorded.")
          .Size("Memory",
                "How much memory its processes use; 0 and \"unknown\" when it is not "
                "measured.")
          .String("Source", "Who manages it: systemd, or a script in init.d.")
          .String("File", "The file that defines it; \"none\" when there is none.")
          .String("Description", "What it is; \"none\" when it is not recorded.")
          .Strings("Last Lines", "The last lines that it wrote to the journal, the oldest first.")
          .String("Log", "The lines as one string for people, or why lines may be missing.");
  return shape;
}

// Formats the log so that each line begins below the name of the field.
std::string ForPeople(const ServiceLog& log) {
  std::string text = log.problem.empty() ? "" : "(" + log.problem + ")";
  for (const std::string& line : log.lines) {
    text.append("\n").append(line);
  }
  return TextOr(kNone, text);
}

// Returns no log without systemd, because there is then no journal that knows services.
ServiceLog ReadLog(const ServiceDetails& details) {
  if (details.service.source != kSystemd) {
    return {{}, "without systemd there is no journal"};
  }
  return ReadServiceLog(ServiceUnit(details.service.name));
}

void SetMemory(const ServiceDetails& details, MetaObj::MetaStruct& result) {
  SetSize(result, "Memory", details.memoryBytes.value_or(0));
  if (!details.memoryBytes) {
    result.SetField("Memory", SanitizedText(kUnknown));
  }
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const ServiceDetails& details) {
  const Service& service = details.service;
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(service.name));
  result->SetField("State", SanitizedText(service.state));
  result->SetField("Sub State", SanitizedText(TextOr(kNone, service.subState)));
  result->SetField("Boot State", SanitizedText(TextOr(kNone, service.bootState)));
  result->SetField("Load State", SanitizedText(TextOr(kNone, details.loadState)));
  result->SetField("Main Process", static_cast<long>(details.mainProcess));
  result->SetField("Since", SanitizedText(TextOr(kUnknown, details.since)));
  SetMemory(details, *result);
  result->SetField("Source", SanitizedText(service.source));
  result->SetField("File", SanitizedText(TextOr(kNone, details.file)));
  result->SetField("Description", SanitizedText(TextOr(kNone, service.description)));
  const ServiceLog log = ReadLog(details);
  result->SetField("Last Lines", SanitizedList(log.lines));
  result->SetField("Log", SanitizedLines(ForPeople(log)));
  return result;
}

class ServiceGet final : public HostCommand {
 public:
  ServiceGet() : HostCommand("Show the state of one service and its last lines in the journal.") {
    ShowAsLines("ServiceDetails",
                "Description,State,Sub State,Boot State,Load State,Main Process,Since,Memory,"
                "Source,File,Log",
                {{"header:ServiceDetails", "Service %Name%"}});
    AddMetaData("complete:name", "service.list Name");
    AddExample("--name procps", "Show the service that sets the parameters of the kernel");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddServiceName(spec); }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The service with its state.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    output.SetRootObject(ToStruct(ServiceManager().Get(input.GetParameter("name"))));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewServiceGet() { return std::make_shared<ServiceGet>(); }

}  // namespace Kestrel::Host

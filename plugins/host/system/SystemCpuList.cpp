// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/system/Cpus.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Cpu")
          .Int("Number", "The number of the logical processor.")
          .Bool("Online", "Whether it is online.")
          .Int("Node", "Its memory node; -1 if unknown.")
          .Int("Socket", "The socket that it is part of; -1 if unknown.")
          .Int("Core", "The core that it is part of; -1 if unknown.")
          .Ints("Siblings", "The logical processors of the same core, including this one.")
          .String("Vendor", "Its vendor; \"unknown\" while it is offline.")
          .String("Model", "Its model; \"unknown\" while it is offline.")
          .String("Frequency", "Its current frequency in MHz; \"unknown\" while it is offline.")
          .Int("Frequency Kilohertz", "The frequency in kHz; -1 if unknown.")
          .SortedBy("Frequency", "Frequency Kilohertz");
  return shape;
}

constexpr long kKilohertzPerMegahertz = 1000;

std::shared_ptr<MetaObj::MetaString> TextOrUnknown(const std::string& text) {
  return SanitizedText(text.empty() ? "unknown" : text);
}

std::string FormatFrequency(long kilohertz) {
  return kilohertz < 0 ? "unknown" : std::to_string(kilohertz / kKilohertzPerMegahertz) + " MHz";
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Cpu& cpu) {
  auto result = Shape().NewStruct();
  result->SetField("Number", cpu.number);
  result->SetField("Online", cpu.isOnline);
  result->SetField("Node", cpu.node);
  result->SetField("Socket", cpu.socket);
  result->SetField("Core", cpu.core);
  result->SetField("Siblings", cpu.siblings);
  result->SetField("Vendor", TextOrUnknown(cpu.vendor));
  result->SetField("Model", TextOrUnknown(cpu.model));
  result->SetField("Frequency", FormatFrequency(cpu.kilohertz));
  result->SetField("Frequency Kilohertz", cpu.kilohertz);
  return result;
}

class SystemCpuList final : public ListCommand {
 public:
  SystemCpuList()
      : ListCommand("List the logical processors.", Shape,
                    "The logical processors that are present, sorted by number.") {
    ShowColumns("Number,Online,Node,Socket,Core,Siblings,Frequency,Model", {{"wrap-last", "true"}});
    AddMetaData("complete:number", "system.cpu.list Number");
    AddExample("", "List all logical processors");
    AddExample("--online=false", "List those that are offline");
    AddExample("--number=0 --number=1", "List two processors");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("number", CallSpec::IntList, "List only processors with one of these numbers.")
        .Short("n")
        .Between(0, 1 << 16)
        .AddTo(spec);
    Parameter("online", CallSpec::BoolList,
              "List only processors that are online (true) or offline (false).")
        .Short("o")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const IntFilter numbers(input, "number");
    const BoolFilter online(input, "online");
    for (const Cpu& cpu : ReadCpus(kProc, kSys)) {
      if (numbers.Accepts(cpu.number) && online.Accepts(cpu.isOnline)) {
        rows.Add(ToStruct(cpu));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemCpuList() { return std::make_shared<SystemCpuList>(); }

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/Cpus.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("Cpu")
          .Number("Number", "The number of the logical processor.")
          .Truth("Online", "Whether the kernel uses it.")
          .Number("Node", "The memory node that it belongs to; -1 when unknown.")
          .Number("Socket", "The chip that it is part of; -1 when unknown.")
          .Number("Core", "The core of the chip that it is part of; -1 when unknown.")
          .Numbers("Siblings", "The logical processors of the same core, itself too.")
          .Text("Vendor", "Who made it; empty when unknown.")
          .Text("Model", "What it is; empty when unknown.")
          .Number("Frequency", "Its present frequency in MHz; -1 when unknown.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> MakeRecord(const Cpu& cpu) {
  auto record = Shape().NewRecord();
  record->SetField("Number", cpu.number);
  record->SetField("Online", cpu.isOnline);
  record->SetField("Node", cpu.node);
  record->SetField("Socket", cpu.socket);
  record->SetField("Core", cpu.core);
  record->SetField("Siblings", cpu.siblings);
  record->SetField("Vendor", OutsideText(cpu.vendor));
  record->SetField("Model", OutsideText(cpu.model));
  record->SetField("Frequency", cpu.frequency);
  return record;
}

class SystemCpuList final : public HostCommand {
 public:
  SystemCpuList() : HostCommand("List the logical processors.") {
    ShowAsTable("Cpu", "Number,Online,Node,Socket,Core,Siblings,Frequency,Model",
                {{"units:Cpu.Frequency", "MHz"}, {"wrap-last", "true"}});
    AddExample("", "List all logical processors");
    AddExample("--online=false", "List those that the kernel does not use");
    AddExample("--number=0 --number=1", "List two of them");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("number", CallSpec::IntList, "List only processors with one of these numbers.")
        .Short("n")
        .Between(0, 1 << 16)
        .AddTo(spec);
    Parameter("online", CallSpec::BoolList,
              "List only processors of which it is one of these that the kernel uses them.")
        .Short("o")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The logical processors that are present, by number.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    std::vector<std::int64_t> numbers;
    std::vector<bool> states;
    input.GetParameterIntList("number", numbers);
    input.GetParameterBoolList("online", states);
    const auto list = Shape().NewList();
    for (const Cpu& cpu : ReadCpus(kProc, kSys)) {
      const bool isWanted =
          (numbers.empty() || std::count(numbers.begin(), numbers.end(), cpu.number) > 0) &&
          (states.empty() || std::count(states.begin(), states.end(), cpu.isOnline) > 0);
      if (isWanted) {
        list->Add(MakeRecord(cpu));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemCpuList() { return std::make_shared<SystemCpuList>(); }

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemFigures.h"

namespace Kestrel::Host {
namespace {

using Record = std::shared_ptr<MetaObj::MetaStruct>;

const RecordShape& PhysicalShape() {
  static const RecordShape shape =
      RecordShape("PhysicalMemory")
          .Number("Total", "All memory that the kernel manages, in KiB.")
          .Number("Used", "What is not available, in KiB.")
          .Number("Free", "What nobody uses, in KiB.")
          .Number("Shared", "What programs share in file systems held in memory, in KiB.")
          .Number("Buffers", "What holds parts of devices, in KiB.")
          .Number("Cached", "What holds parts of files and can be given up, in KiB.")
          .Number("Available", "What a program can have before others are pushed out, in KiB.");
  return shape;
}

const RecordShape& SwapShape() {
  static const RecordShape shape =
      RecordShape("SwapMemory")
          .Number("Total", "All space for memory that is pushed out, in KiB.")
          .Number("Used", "What of it is in use, in KiB.")
          .Number("Free", "What of it nobody uses, in KiB.");
  return shape;
}

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("SystemMemory")
          .Record("Physical", PhysicalShape(), "The memory of the machine.")
          .Record("Swap", SwapShape(), "The space for memory that is pushed out.");
  return shape;
}

Record MakePhysical(const Memory& memory) {
  Record record = PhysicalShape().NewRecord();
  record->SetField("Total", memory.total);
  record->SetField("Used", memory.total - memory.available);
  record->SetField("Free", memory.free);
  record->SetField("Shared", memory.shared);
  record->SetField("Buffers", memory.buffers);
  record->SetField("Cached", memory.cached);
  record->SetField("Available", memory.available);
  return record;
}

Record MakeSwap(const Memory& memory) {
  Record record = SwapShape().NewRecord();
  record->SetField("Total", memory.swapTotal);
  record->SetField("Used", memory.swapTotal - memory.swapFree);
  record->SetField("Free", memory.swapFree);
  return record;
}

class SystemMemoryGet final : public HostCommand {
 public:
  SystemMemoryGet() : HostCommand("Show how much memory there is and how much is in use.") {
    ShowAsLines("SystemMemory", "Physical,Swap",
                {{"header:PhysicalMemory", "<NONE>"},
                 {"header:SwapMemory", "<NONE>"},
                 {"fields:PhysicalMemory", "Total,Used,Free,Shared,Buffers,Cached,Available"},
                 {"fields:SwapMemory", "Total,Used,Free"},
                 {"units:PhysicalMemory.Total", "KiB"},
                 {"units:PhysicalMemory.Used", "KiB"},
                 {"units:PhysicalMemory.Free", "KiB"},
                 {"units:PhysicalMemory.Shared", "KiB"},
                 {"units:PhysicalMemory.Buffers", "KiB"},
                 {"units:PhysicalMemory.Cached", "KiB"},
                 {"units:PhysicalMemory.Available", "KiB"},
                 {"units:SwapMemory.Total", "KiB"},
                 {"units:SwapMemory.Used", "KiB"},
                 {"units:SwapMemory.Free", "KiB"}});
    AddExample("", "Show the memory of this machine");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareRecord(spec, "The memory of the machine, in KiB.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const Memory memory = ReadMemory(kProc);
    const auto record = Shape().NewRecord();
    record->SetField("Physical", MakePhysical(memory));
    record->SetField("Swap", MakeSwap(memory));
    output.SetRootObject(record);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemMemoryGet() {
  return std::make_shared<SystemMemoryGet>();
}

}  // namespace Kestrel::Host

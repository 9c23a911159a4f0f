// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemStatistics.h"

namespace Kestrel::Host {
namespace {

using Struct = std::shared_ptr<MetaObj::MetaStruct>;

const StructShape& PhysicalShape() {
  static const StructShape shape =
      StructShape("PhysicalMemory")
          .Int("Total", "All memory that the kernel manages, in KiB.")
          .Int("Used", "The memory that is not available, in KiB.")
          .Int("Free", "The memory that is not used at all, in KiB.")
          .Int("Shared", "Shared memory and file systems in memory, in KiB.")
          .Int("Buffers", "Buffers of block devices, in KiB.")
          .Int("Cached", "Cached files and other caches that can be freed, in KiB.")
          .Int("Available", "The memory that programs can get without swapping, in KiB.");
  return shape;
}

const StructShape& SwapShape() {
  static const StructShape shape = StructShape("SwapMemory")
                                       .Int("Total", "The swap space, in KiB.")
                                       .Int("Used", "The used swap space, in KiB.")
                                       .Int("Free", "The free swap space, in KiB.");
  return shape;
}

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SystemMemory")
          .Struct("Physical", PhysicalShape(), "The memory of the machine.")
          .Struct("Swap", SwapShape(), "The swap space.");
  return shape;
}

Struct MakePhysical(const Memory& memory) {
  Struct result = PhysicalShape().NewStruct();
  result->SetField("Total", memory.total);
  result->SetField("Used", memory.GetUsed());
  result->SetField("Free", memory.free);
  result->SetField("Shared", memory.shared);
  result->SetField("Buffers", memory.buffers);
  result->SetField("Cached", memory.cached);
  result->SetField("Available", memory.available);
  return result;
}

Struct MakeSwap(const Memory& memory) {
  Struct result = SwapShape().NewStruct();
  result->SetField("Total", memory.swapTotal);
  result->SetField("Used", memory.GetSwapUsed());
  result->SetField("Free", memory.swapFree);
  return result;
}

class SystemMemoryGet final : public HostCommand {
 public:
  SystemMemoryGet() : HostCommand("Show the memory and its usage.") {
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
    Shape().DeclareStruct(spec, "The memory of the machine, in KiB.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const Memory memory = ReadMemory(kProc);
    const auto result = Shape().NewStruct();
    result->SetField("Physical", MakePhysical(memory));
    result->SetField("Swap", MakeSwap(memory));
    output.SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemMemoryGet() {
  return std::make_shared<SystemMemoryGet>();
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemStatistics.h"

namespace Kestrel::Host {
namespace {

using Struct = std::shared_ptr<MetaObj::MetaStruct>;

const StructShape& PhysicalShape() {
  static const StructShape shape =
      StructShape("PhysicalMemory")
          .Size("Total", "All memory that the kernel manages.")
          .Size("Used", "The memory that is not available.")
          .Size("Free", "The memory that is not used at all.")
          .Size("Shared", "Shared memory and file systems in memory.")
          .Size("Buffers", "Buffers of block devices.")
          .Size("Cached", "Cached files and other caches that can be freed.")
          .Size("Available", "The memory that programs can get without swapping.");
  return shape;
}

const StructShape& SwapShape() {
  static const StructShape shape = StructShape("SwapMemory")
                                       .Size("Total", "The swap space.")
                                       .Size("Used", "The used swap space.")
                                       .Size("Free", "The free swap space.");
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
  SetSize(*result, "Total", memory.total);
  SetSize(*result, "Used", memory.GetUsed());
  SetSize(*result, "Free", memory.free);
  SetSize(*result, "Shared", memory.shared);
  SetSize(*result, "Buffers", memory.buffers);
  SetSize(*result, "Cached", memory.cached);
  SetSize(*result, "Available", memory.available);
  return result;
}

Struct MakeSwap(const Memory& memory) {
  Struct result = SwapShape().NewStruct();
  SetSize(*result, "Total", memory.swapTotal);
  SetSize(*result, "Used", memory.GetSwapUsed());
  SetSize(*result, "Free", memory.swapFree);
  return result;
}

class SystemMemoryGet final : public HostCommand {
 public:
  SystemMemoryGet() : HostCommand("Show the memory and its usage.") {
    ShowAsLines("SystemMemory", "Physical,Swap",
                {{"header:PhysicalMemory", "<NONE>"},
                 {"header:SwapMemory", "<NONE>"},
                 {"fields:PhysicalMemory", "Total,Used,Free,Shared,Buffers,Cached,Available"},
                 {"fields:SwapMemory", "Total,Used,Free"}});
    AddExample("", "Show the memory of this machine");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The memory of the machine.");
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

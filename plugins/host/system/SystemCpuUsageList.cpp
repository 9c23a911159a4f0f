// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <string>
#include <thread>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/system/CpuUsage.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

// The kernel counts in ticks of 10 ms, so a shorter interval would be meaningless.
constexpr long kMinInterval = 10;
constexpr long kMaxInterval = 3600 * 1000;
constexpr long kDefaultInterval = 500;
constexpr char kTotal[] = "total";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("CpuUsage")
          .String("Cpu", "The number of the logical processor; `total` for all together.")
          .Int("Number", "Its number; -1 for all together.")
          .Share("Busy", "The share of the time in which it did anything.")
          .Share("User", "The share in programs, including those in virtual machines.")
          .Share("Nice", "The share in programs of a lower priority.")
          .Share("System", "The share in the kernel.")
          .Share("Idle", "The share in which it was idle.")
          .Share("Wait", "The share in which it was idle and waited for input or output.")
          .Share("Interrupt", "The share in the handlers of hardware interrupts.")
          .Share("Soft Interrupt", "The share in the handlers of software interrupts.")
          .Share("Steal", "The share in which other virtual machines had the processor.")
          .Share("Guest", "The part of User in virtual machines.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const CpuUsage& usage) {
  auto result = Shape().NewStruct();
  result->SetField("Cpu", usage.number < 0 ? kTotal : std::to_string(usage.number));
  result->SetField("Number", usage.number);
  SetShare(*result, "Busy", usage.busy);
  SetShare(*result, "User", usage.user);
  SetShare(*result, "Nice", usage.nice);
  SetShare(*result, "System", usage.system);
  SetShare(*result, "Idle", usage.idle);
  SetShare(*result, "Wait", usage.inputWait);
  SetShare(*result, "Interrupt", usage.interrupt);
  SetShare(*result, "Soft Interrupt", usage.softInterrupt);
  SetShare(*result, "Steal", usage.steal);
  SetShare(*result, "Guest", usage.guest);
  return result;
}

class SystemCpuUsageList final : public ListCommand {
 public:
  SystemCpuUsageList()
      : ListCommand("List how busy the processors are.", Shape,
                    "All processors together, then each that is online, sorted by number.") {
    ShowColumns("Cpu,Busy,User,Nice,System,Wait,Steal,Idle", {{"wrap-last", "true"}});
    AddExample("", "Show how busy the processors are for half a second");
    AddExample("--interval 2000", "Look for two seconds");
    AddExample("--sort Busy --descending --limit 5", "List the busiest processors");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("interval", CallSpec::Int,
              "The time between the two samples in milliseconds, %ENUM%; the default is 500.")
        .Short("i")
        .Between(kMinInterval, kMaxInterval)
        .AddTo(spec);
    Parameter("number", CallSpec::IntList,
              "List only processors with one of these numbers; -1 is all together.")
        .Short("n")
        .Between(-1, 1 << 16)
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const IntFilter numbers(input, "number");
    const long interval =
        input.HasParameter("interval") ? input.GetParameterInt("interval") : kDefaultInterval;
    const auto before = ReadCpuTimes(kProc);
    std::this_thread::sleep_for(std::chrono::milliseconds(interval));
    for (const CpuUsage& usage : CompareCpuTimes(before, ReadCpuTimes(kProc))) {
      if (numbers.Accepts(usage.number)) {
        rows.Add(ToStruct(usage));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemCpuUsageList() {
  return std::make_shared<SystemCpuUsageList>();
}

}  // namespace Kestrel::Host

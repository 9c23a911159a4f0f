// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/MadeUpMachine.h"
#include "support/ScopedEnvironment.h"
#include "support/Witness.h"

// The commands about clocks, processor usage and devices: compared with other programs, and on a
// machine with simulated data.
namespace Kestrel::Testing {
namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::Not;

std::string FirstLine(const std::string& command) {
  const auto lines = WitnessLines(command);
  return lines.empty() ? std::string() : lines.front();
}

// The clock.

class ClockZoneTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ClockZoneTest, AgreesWithDate) {
  const ScopedEnvironment zone("TZ", std::string(GetParam()));
  const auto look = [] { return WitnessLines("date '+%F %T\n%s\n%:z\n%Z'"); };
  const auto before = look();
  const Row clock = CallStruct("system clock get");
  const auto after = look();
  EXPECT_THAT(clock.at("Time"), AllOf(Ge(before[0]), Le(after[0])));
  EXPECT_THAT(std::stol(clock.at("Epoch Seconds")),
              AllOf(Ge(std::stol(before[1])), Le(std::stol(after[1]))));
  EXPECT_EQ(clock.at("Offset"), before[2]);
  EXPECT_EQ(clock.at("Abbreviation"), before[3]);
  EXPECT_EQ(clock.at("Zone"), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Zones, ClockZoneTest,
                         ::testing::Values("UTC", "Europe/Berlin", "America/St_Johns",
                                           "Asia/Kolkata", "Pacific/Kiritimati", "XYZ+3:30",
                                           "Africa/Monrovia"),
                         [](const auto& zone) {
                           std::string name;
                           std::copy_if(zone.param, zone.param + std::string(zone.param).size(),
                                        std::back_inserter(name),
                                        [](char letter) { return std::isalnum(letter) != 0; });
                           return name;
                         });

TEST(SystemClockGetTest, TheSecondsAgreeWithTheOffset) {
  const ScopedEnvironment zone("TZ", std::string("America/St_Johns"));
  const Row clock = CallStruct("system clock get");
  EXPECT_EQ(clock.at("Offset Seconds"),
            FirstLine("python3 -c 'import time; print(time.localtime().tm_gmtoff)'"));
}

TEST(SystemClockGetTest, SynchronizationAgreesWithTheKernel) {
  // Reads the bit STA_UNSYNC and the result TIME_ERROR in Python, independently of the plug-in.
  const std::string kernel = FirstLine(
      "python3 -c 'import ctypes; b = ctypes.create_string_buffer(512); "
      "r = ctypes.CDLL(None).adjtimex(b); s = ctypes.c_int.from_buffer(b, 40).value; "
      "print(str(r != 5 and s & 64 == 0).lower())'");
  const CommandResult result = Call("system clock get");
  EXPECT_EQ(TextOf(result.GetStruct(), "Synchronized"), kernel);
  EXPECT_GE(NumberOf(result.GetStruct(), "Maximum Error Microseconds"), 0);
  EXPECT_GE(NumberOf(result.GetStruct(), "Estimated Error Microseconds"), 0);
}

// The processors.

TEST(SystemCpuUsageListTest, ListsTheProcessorsThatAreOnline) {
  std::vector<std::string> expected = {"total"};
  for (const std::string& line : WitnessLines("grep '^cpu[0-9]' /proc/stat | cut -d' ' -f1")) {
    expected.push_back(line.substr(3));
  }
  EXPECT_EQ(CallColumn("system cpu usage list", "Cpu", {{"interval", "10"}}), expected);
}

TEST(SystemCpuUsageListTest, TheSharesOfAProcessorAddUpToTheWhole) {
  for (const Row& row : CallRows("system cpu usage list", {{"interval", "200"}})) {
    if (row.at("Busy Hundredths") == "-1") {
      continue;  // it came online between the samples
    }
    long sum = 0;
    for (const char* const name :
         {"User", "Nice", "System", "Idle", "Wait", "Interrupt", "Soft Interrupt", "Steal"}) {
      const long share = std::stol(row.at(std::string(name) + " Hundredths"));
      EXPECT_THAT(share, AllOf(Ge(0), Le(10000))) << row.at("Cpu") << " " << name;
      sum += share;
    }
    EXPECT_THAT(sum, AllOf(Ge(9996), Le(10004))) << row.at("Cpu");  // each may be rounded
  }
}

TEST(SystemCpuUsageListTest, TheTextSaysTheSameAsTheInteger) {
  for (const Row& row : CallRows("system cpu usage list", {{"interval", "100"}})) {
    const std::string hundredths = row.at("Busy Hundredths");
    EXPECT_EQ(row.at("Busy"), FirstLine("printf '%d.%02d %%' $((" + hundredths + " / 100)) $((" +
                                        hundredths + " % 100))"));
  }
}

TEST(SystemCpuUsageListTest, TheIntervalIsInMilliseconds) {
  const auto start = std::chrono::steady_clock::now();
  Call("system cpu usage list", {{"interval", "150"}});
  const auto passed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(passed, std::chrono::milliseconds(150));
  EXPECT_LT(passed, std::chrono::seconds(100));
}

TEST(SystemCpuUsageListTest, SeesAProcessorAtWork) {
  // The child keeps a processor busy. Other programs can only add to that.
  const pid_t child = ::fork();
  if (child == 0) {
    for (volatile unsigned long i = 0;; i = i + 1) {
    }
  }
  ASSERT_GT(child, 0);
  const auto rows = CallRows("system cpu usage list", {{"interval", "400"}});
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ASSERT_THAT(rows, Not(IsEmpty()));
  EXPECT_THAT(std::stol(rows.front().at("Busy Hundredths")), Ge(100));
}

TEST(SystemCpuUsageListTest, OneNumberOrTheTotalCanBeChosen) {
  EXPECT_THAT(CallColumn("system cpu usage list", "Cpu", {{"interval", "10"}, {"number", "-1"}}),
              ElementsAre("total"));
  EXPECT_THAT(CallColumn("system cpu usage list", "Number", {{"interval", "10"}, {"number", "0"}}),
              ElementsAre("0"));
  EXPECT_THAT(CallColumn("system cpu usage list", "Cpu", {{"interval", "10"}, {"number", "65000"}}),
              IsEmpty());
}

TEST(SystemCpuUsageListTest, SortsSharesByTheirValue) {
  std::vector<long> shares;
  for (const Row& row : CallRows("system cpu usage list", {{"interval", "50"}, {"sort", "Idle"}})) {
    shares.push_back(std::stol(row.at("Idle Hundredths")));
  }
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
}

// Devices.

// Returns the sections of lspci's output, each with its "name: value" lines.
std::vector<std::map<std::string, std::string>> AskLspci(const std::string& options) {
  std::vector<std::map<std::string, std::string>> devices(1);
  for (const std::string& line : WitnessLines("lspci -D -k -vmm " + options + " 2>/dev/null")) {
    const std::size_t colon = line.find(":\t");
    if (colon != std::string::npos) {
      devices.back()[line.substr(0, colon)] = line.substr(colon + 2);
    } else if (!devices.back().empty()) {
      devices.emplace_back();
    }
  }
  if (devices.back().empty()) {
    devices.pop_back();
  }
  return devices;
}

TEST(SystemDeviceListTest, TheNumbersAndDriversAgreeWithLspci) {
  const auto witness = AskLspci("-n");
  const auto rows = CallRows("system device list", {{"bus", "pci"}});
  ASSERT_EQ(rows.size(), witness.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto& device = witness[i];
    EXPECT_EQ(rows[i].at("Bus"), "pci");
    EXPECT_EQ(rows[i].at("Address"), device.at("Slot"));
    EXPECT_EQ(rows[i].at("Vendor Id"), device.at("Vendor"));
    EXPECT_EQ(rows[i].at("Device Id"), device.at("Device"));
    EXPECT_EQ(rows[i].at("Class Id").substr(0, 4), device.at("Class"));
    EXPECT_EQ(rows[i].at("Driver"), device.count("Driver") == 0 ? "none" : device.at("Driver"));
  }
}

TEST(SystemDeviceListTest, TheNamesAgreeWithLspci) {
  const auto witness = AskLspci("");
  const auto rows = CallRows("system device list", {{"bus", "pci"}});
  ASSERT_EQ(rows.size(), witness.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto& device = witness[i];
    const std::string unknownVendor = "Vendor " + rows[i].at("Vendor Id");
    const std::string unknownDevice = "Device " + rows[i].at("Device Id");
    EXPECT_EQ(rows[i].at("Vendor") == "unknown" ? unknownVendor : rows[i].at("Vendor"),
              device.at("Vendor"));
    EXPECT_EQ(rows[i].at("Device") == "unknown" ? unknownDevice : rows[i].at("Device"),
              device.at("Device"));
    // lspci adds the number to an unknown class: "Unassigned class [ffff]".
    const std::string witnessed = device.at("Class");
    EXPECT_EQ(rows[i].at("Class"), witnessed.substr(0, witnessed.find(" [")));
  }
}

TEST(SystemDeviceListTest, TheNumbersOnUsbAgreeWithTheKernel) {
  const auto witness = WitnessLines(
      "cd /sys/bus/usb/devices 2>/dev/null || exit 0; for d in *; do [ ! -e $d/idVendor ] || "
      "echo $d $(cat $d/idVendor $d/idProduct); done | LC_ALL=C sort");
  std::vector<std::string> lines;
  for (const Row& row : CallRows("system device list", {{"bus", "usb"}})) {
    lines.push_back(row.at("Address") + " " + row.at("Vendor Id") + " " + row.at("Device Id"));
  }
  EXPECT_EQ(lines, witness);
}

// A machine with simulated data. No list of names contains the numbers of its devices.
class SystemHardwareMachineTest : public MadeUpMachineTest {
 protected:
  void Pci(const std::string& address, const std::string& deviceClass, const std::string& driver) {
    const std::string folder = "sys/bus/pci/devices/" + address;
    File(folder + "/vendor", "0xfff9\n");
    File(folder + "/device", "0x0a0b\n");
    File(folder + "/class", deviceClass);
    if (!driver.empty()) {
      Link(folder + "/driver", "../../../../bus/pci/drivers/" + driver);
    }
  }

  void Usb(const std::string& address, const std::string& maker, const std::string& product) {
    const std::string folder = "sys/bus/usb/devices/" + address;
    File(folder + "/idVendor", "fff9\n");
    File(folder + "/idProduct", "0001\n");
    File(folder + "/bDeviceClass", "08\n");
    File(folder + "/bDeviceSubClass", "06\n");
    File(folder + "/bDeviceProtocol", "50\n");
    File(folder + "/manufacturer", maker);
    File(folder + "/product", product);
  }

  void AddSamples() {
    Pci("0000:00:00.0", "0x060000\n", "");
    Pci("0000:00:1f.2", "0x010601\n", "ahci");
    Usb("1-1", "Maker\n", "Stick\n");
    Usb("2-1.4", "", "");
  }

  static std::vector<std::string> Addresses(const Parameters& parameters) {
    return CallColumn("system device list", "Address", parameters);
  }
};

TEST_F(SystemHardwareMachineTest, ShowsTheDevices) {
  AddSamples();
  ExpectPrinted("system device list --bus usb",
                "Address  Driver  Class         Name\n"
                "-------  ------  ------------  ----\n"
                "1-1      none    Mass Storage  Maker Stick\n"
                "2-1.4    none    Mass Storage  fff9:0001\n");
}

TEST_F(SystemHardwareMachineTest, ShowsAWordForUnknownValues) {
  AddSamples();
  RunThere([] {
    const auto rows = CallRows("system device list");
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0].at("Vendor"), "unknown");
    EXPECT_EQ(rows[0].at("Device"), "unknown");
    EXPECT_EQ(rows[0].at("Name"), "fff9:0a0b");
    EXPECT_EQ(rows[0].at("Driver"), "none");
    EXPECT_EQ(rows[0].at("Class Id"), "060000");
    EXPECT_EQ(rows[1].at("Driver"), "ahci");
    EXPECT_EQ(rows[2].at("Name"), "Maker Stick");
    EXPECT_EQ(rows[2].at("Class Id"), "080650");
    for (const Row& row : rows) {
      for (const auto& [field, text] : row) {
        EXPECT_NE(text, "") << field;
      }
    }
  });
}

TEST_F(SystemHardwareMachineTest, ChoosesDevices) {
  AddSamples();
  RunThere([] {
    EXPECT_THAT(Addresses({}), ElementsAre("0000:00:00.0", "0000:00:1f.2", "1-1", "2-1.4"));
    EXPECT_THAT(Addresses({{"bus", "pci"}}), ElementsAre("0000:00:00.0", "0000:00:1f.2"));
    EXPECT_THAT(Addresses({{"bus", "usb"}}), ElementsAre("1-1", "2-1.4"));
    EXPECT_EQ(Addresses({{"bus", "usb"}, {"bus", "pci"}}).size(), 4u);
    EXPECT_THAT(Addresses({{"driver", "ahci"}}), ElementsAre("0000:00:1f.2"));
    EXPECT_THAT(Addresses({{"driver", "a*"}}), ElementsAre("0000:00:1f.2"));
    EXPECT_THAT(Addresses({{"driver", "AHCI"}}), IsEmpty());
    EXPECT_THAT(Addresses({{"driver", "none"}}), ElementsAre("0000:00:00.0", "1-1", "2-1.4"));
    EXPECT_THAT(Addresses({{"match", "[Ss]tick"}}), ElementsAre("1-1"));
    EXPECT_THAT(Addresses({{"match", "^Mass Storage$|:0a0b$"}}),
                ElementsAre("0000:00:00.0", "0000:00:1f.2", "1-1", "2-1.4"));
    EXPECT_THAT(Addresses({{"sort", "Name"}, {"limit", "1"}}), ElementsAre("1-1"));
  });
}

TEST_F(SystemHardwareMachineTest, EscapesControlCharactersInNames) {
  Folder("sys/bus/pci/devices");
  Usb("1-1", "\x1b[31mred\n", "two\nlines\xff\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("system device list", "Name"),
                ElementsAre("\\x1b[31mred two\\x0alines\\xff"));
  });
}

TEST_F(SystemHardwareMachineTest, ReportsThatNothingIsMounted) {
  RunThere([] {
    EXPECT_THAT(CallErrors("system device list"),
                ElementsAre("Unable to read /sys/bus/pci/devices: No such file or directory"));
    EXPECT_THAT(CallErrors("system device list", {{"bus", "usb"}}),
                ElementsAre("Unable to read /sys/bus/usb/devices: No such file or directory"));
    EXPECT_THAT(CallErrors("system cpu usage list", {{"interval", "10"}}),
                ElementsAre("Unable to read /proc/stat: No such file or directory"));
  });
}

TEST_F(SystemHardwareMachineTest, ABusThatTheKernelDoesNotHaveIsAnEmptyList) {
  Folder("sys/bus/platform/devices");
  RunThere([] { EXPECT_THAT(Addresses({}), IsEmpty()); });
}

TEST_F(SystemHardwareMachineTest, TheUsageIsUnknownIfTheCountersDoNotChange) {
  File("proc/stat", "cpu  1 2 3 4 5 6 7 8 9 0\ncpu0 1 2 3 4 5 6 7 8 9 0\n");
  ExpectPrinted("system cpu usage list --interval 10",
                "Cpu    Busy     User     Nice     System   Wait     Steal    Idle\n"
                "-----  -------  -------  -------  -------  -------  -------  ----\n"
                "total  unknown  unknown  unknown  unknown  unknown  unknown  unknown\n"
                "0      unknown  unknown  unknown  unknown  unknown  unknown  unknown\n");
}

TEST_F(SystemHardwareMachineTest, ShowsTheHardwareClock) {
  File("sys/class/rtc/rtc0/since_epoch", "1700000000\n");
  File("sys/class/rtc/rtc0/hctosys", "1\n");
  RunThere([] {
    const Row clock = CallStruct("system clock get");
    EXPECT_EQ(clock.at("Hardware Clock"), "rtc0");
    EXPECT_EQ(clock.at("Hardware Time"), "2023-11-14 22:13:20");
    EXPECT_EQ(clock.at("Hardware Seconds"), "1700000000");
    EXPECT_THAT(clock.at("Hardware Zone"), AnyOf("UTC", "local"));
  });
}

TEST_F(SystemHardwareMachineTest, AMachineWithoutAHardwareClockHasNone) {
  RunThere([] {
    const Row clock = CallStruct("system clock get");
    EXPECT_EQ(clock.at("Hardware Clock"), "none");
    EXPECT_EQ(clock.at("Hardware Time"), "none");
    EXPECT_EQ(clock.at("Hardware Zone"), "none");
    EXPECT_EQ(clock.at("Hardware Seconds"), "-1");
  });
}

TEST_F(SystemHardwareMachineTest, AHardwareClockThatCannotBeReadIsAnError) {
  File("sys/class/rtc/rtc0/since_epoch", "");
  RunThere([] {
    EXPECT_THAT(CallErrors("system clock get"),
                ElementsAre("Unable to understand /sys/class/rtc/rtc0/since_epoch"));
  });
}

TEST_F(SystemHardwareMachineTest, AnInterfaceNamesTheDriverOfItsDevice) {
  AddSamples();
  const std::string interface = "sys/bus/usb/devices/1-1/1-1:1.0";
  File(interface + "/bInterfaceClass", "08\n");
  Link(interface + "/driver", "../../../../../bus/usb/drivers/usb-storage");
  RunThere([] {
    EXPECT_THAT(CallColumn("system device list", "Driver", {{"bus", "usb"}}),
                ElementsAre("usb-storage", "none"));
    EXPECT_THAT(Addresses({{"driver", "usb-*"}}), ElementsAre("1-1"));
    EXPECT_THAT(Addresses({{"driver", "usb-*"}, {"driver", "none"}, {"bus", "usb"}}),
                ElementsAre("1-1", "2-1.4"));
  });
}

TEST_F(SystemHardwareMachineTest, ADamagedDeviceIsAnErrorAndNotAShorterList) {
  AddSamples();
  File("sys/bus/pci/devices/0000:00:1f.2/class", "storage\n");
  RunThere([] {
    const std::string message = "Unable to understand /sys/bus/pci/devices/0000:00:1f.2/class";
    EXPECT_THAT(CallErrors("system device list"), ElementsAre(message));
    EXPECT_THAT(CallErrors("system device list", {{"driver", "none"}}), ElementsAre(message));
    EXPECT_THAT(Addresses({{"bus", "usb"}}), ElementsAre("1-1", "2-1.4"));
  });
}

TEST_F(SystemHardwareMachineTest, DamagedTimesOfProcessorsAreAnError) {
  File("proc/stat", "cpu  1 2 3 4\ncpu0 1 2 3 four\n");
  RunThere([] {
    EXPECT_THAT(CallErrors("system cpu usage list", {{"interval", "10"}}),
                ElementsAre("Unable to understand /proc/stat"));
  });
}

// The real tool.

TEST(SystemHardwareToolTest, TheTableOfProcessorUsageHasAtMost80Columns) {
  for (const char* const width : {"--screen-width=80", "--screen-width=200"}) {
    const VexilResult result =
        HostRun({width, "system", "cpu", "usage", "list", "--interval=10"}).Run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    for (std::size_t start = 0; start < result.out.size();) {
      const std::size_t end = result.out.find('\n', start);
      EXPECT_LE(end - start, 80u) << result.out;
      start = end + 1;
    }
  }
}

TEST(SystemHardwareToolTest, TheJsonOutputContainsNumbers) {
  const std::string clock = HostRun({"--formatter", "json", "system", "clock", "get"}).Run().out;
  EXPECT_THAT(clock, ::testing::ContainsRegex("\"Epoch Seconds\": [0-9]{10}"));
  EXPECT_THAT(clock, ::testing::ContainsRegex("\"Offset Seconds\": -?[0-9]+"));
  EXPECT_THAT(clock, ::testing::ContainsRegex("\"Synchronized\": (true|false)"));
  const std::string usage =
      HostRun({"--formatter", "json", "system", "cpu", "usage", "list", "--interval=10"}).Run().out;
  EXPECT_THAT(usage, ::testing::ContainsRegex("\"Busy Hundredths\": -?[0-9]+"));
  EXPECT_THAT(usage, HasSubstr("\"Cpu\": \"total\""));
}

struct WrongCase {
  std::vector<std::string> arguments;
  const char* message;
};

TEST(SystemHardwareToolTest, ReportsTheMistakesOfUsers) {
  const WrongCase cases[] = {
      {{"system", "device", "list", "--bus", "isa"},
       "Errors: \nInvalid data constraint for parameter 'bus'. Expected a single value from the "
       "set [pci, usb] got 'isa'\n"},
      {{"system", "device", "list", "--match", "("},
       "Errors: \n'(' is not a regular expression: missing closing parenthesis\n"},
      {{"system", "cpu", "usage", "list", "--interval", "9"},
       "Errors: \nInvalid data constraint for parameter 'interval'. Expected integer in the range "
       "10-3600000\n"},
      {{"system", "cpu", "usage", "list", "--interval", "1.5"},
       "Errors: \nInvalid data '1.5' for parameter interval expected type Integer\n"},
      {{"system", "cpu", "usage", "list", "--sort", "Load"},
       "Errors: \nThere is no field 'Load' to sort by. Sort by one of: Busy, Busy Hundredths, Cpu, "
       "Guest, Guest Hundredths, Idle, Idle Hundredths, Interrupt, Interrupt Hundredths, Nice, "
       "Nice "
       "Hundredths, Number, Soft Interrupt, Soft Interrupt Hundredths, Steal, Steal Hundredths, "
       "System, System Hundredths, User, User Hundredths, Wait, Wait Hundredths.\n"},
  };
  for (const WrongCase& each : cases) {
    const VexilResult result = HostRun(each.arguments).Run();
    EXPECT_EQ(result.err, each.message);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
}

}  // namespace
}  // namespace Kestrel::Testing

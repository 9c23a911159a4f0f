// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/FullMachine.h"

#include <unistd.h>
#include <utmpx.h>

#include <cstring>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

FullMachineTest::FullMachineTest() {
  AddStatistics();
  AddProcess("1", "0");
  AddProcess("30", "4000000000");
  AddCpus();
  AddClockAndDevices();
  File("proc/modules", "loop 40960 0 - Live 0x0\n");
  File("proc/sys/vm/swappiness", "60\n");
  File("proc/sys/net/core/somaxconn", "4096\n");
  AddUsers();
  AddSession();
  File("etc/os-release", "PRETTY_NAME=Made-up\n");
  File("etc/crontab", "@daily root run\n");
  File("etc/cron.d/package", "@daily root run\n");
  File("var/spool/cron/crontabs/anna", "@daily run\n");
}

void FullMachineTest::AddStatistics() {
  File("proc/uptime", "187384.99 360000.50\n");
  File("proc/stat", "cpu  1 2 3 4 5 6 7 8 0 0\ncpu0 1 2 3 4 5 6 7 8 0 0\nbtime 1700000000\n");
  File("proc/loadavg", "0.46 12.00 0.32 2/95 25897\n");
  File("proc/meminfo", "MemTotal: 16384000 kB\nMemFree: 1000 kB\n");
}

void FullMachineTest::AddProcess(const std::string& id, const std::string& user) {
  File("proc/" + id + "/stat", id + " (x) S 1 1 1 0 1 0 1 2 3 4 5 0 0 0 20 0 1 0 7 4194304 0 0\n");
  File("proc/" + id + "/status", "Uid:\t0\t" + user + "\t0\t0\n");
  File("proc/" + id + "/cmdline", "");
}

void FullMachineTest::AddCpus() {
  File("proc/cpuinfo", "processor : 0\nmodel name : Model A\n");
  const std::string folder = "sys/devices/system/cpu";
  File(folder + "/present", "0\n");
  File(folder + "/online", "0\n");
  File(folder + "/cpu0/topology/physical_package_id", "0\n");
  File(folder + "/cpu0/topology/core_id", "4\n");
  File(folder + "/cpu0/topology/thread_siblings_list", "0\n");
}

void FullMachineTest::AddClockAndDevices() {
  File("etc/adjtime", "0.0 0 0.0\n0\nUTC\n");
  File("etc/timezone", "Etc/UTC\n");
  File("sys/class/rtc/rtc0/hctosys", "1\n");
  File("sys/class/rtc/rtc0/since_epoch", "1700000000\n");
  Folder("sys/bus/pci/devices");
  for (const char* const id : {"idVendor", "idProduct"}) {
    File(std::string("sys/bus/usb/devices/1-1/") + id, "1d6b\n");
  }
  for (const char* const part : {"bDeviceClass", "bDeviceSubClass", "bDeviceProtocol"}) {
    File(std::string("sys/bus/usb/devices/1-1/") + part, "09\n");
  }
}

void FullMachineTest::AddUsers() {
  File("etc/nsswitch.conf", "passwd: files\ngroup: files\n");
  File("etc/passwd", "root:x:0:0::/root:/bin/sh\nanna:x:1000:1000:Anna:/home/anna:/bin/sh\n");
  File("etc/group", "root:x:0:\nanna:x:1000:\nstaff:x:50:anna\n");
}

void FullMachineTest::AddSession() {
  utmpx entry = {};
  entry.ut_type = USER_PROCESS;
  entry.ut_pid = ::getpid();
  std::memcpy(entry.ut_user, "anna", 4);
  File("run/utmp", std::string_view(reinterpret_cast<const char*>(&entry), sizeof(entry)));
}

}  // namespace Kestrel::Testing

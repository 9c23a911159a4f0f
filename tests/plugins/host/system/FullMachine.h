// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "plugins/host/support/MadeUpMachine.h"

namespace Kestrel::Testing {

/// A machine on which no list below "system" is empty, except that of timers: two processes, one
/// processor, a module, kernel parameters, accounts, a session, crontabs and a device.
class FullMachineTest : public MadeUpMachineTest {
 protected:
  FullMachineTest();

 private:
  void AddStatistics();
  void AddProcess(const std::string& id, const std::string& user);
  void AddCpus();
  void AddClockAndDevices();
  void AddUsers();
  void AddSession();
};

}  // namespace Kestrel::Testing

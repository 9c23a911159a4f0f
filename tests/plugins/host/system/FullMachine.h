// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "plugins/host/support/MadeUpMachine.h"

namespace Kestrel::Testing {

/// A machine with two processes, one processor, a module, kernel parameters, accounts, a session,
/// crontabs and a device. Of the lists below "system", only that of timers is empty.
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

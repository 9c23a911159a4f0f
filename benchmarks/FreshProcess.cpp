// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/FreshProcess.h"

#include <malloc.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <stdexcept>

namespace Kestrel::Benchmarks {

Cost InFreshProcess(const std::function<Cost()>& work) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::runtime_error("pipe failed");
  }
  const pid_t child = fork();
  if (child == 0) {
    const Cost cost = work();
    const bool isWritten = write(ends[1], &cost, sizeof cost) == sizeof cost;
    _exit(isWritten ? 0 : 1);
  }
  close(ends[1]);
  Cost cost;
  const bool isRead = child > 0 && read(ends[0], &cost, sizeof cost) == sizeof cost;
  close(ends[0]);
  int status = 0;
  if (child > 0) {
    waitpid(child, &status, 0);
  }
  if (!isRead) {
    throw std::runtime_error("the fresh process failed");
  }
  return cost;
}

double HeapBytes() {
  const struct mallinfo2 heap = mallinfo2();
  return static_cast<double>(heap.uordblks + heap.hblkhd);
}

double ProcessSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace Kestrel::Benchmarks

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>

namespace Kestrel::Benchmarks {

/// The cost of a task: the time for building and for destroying an object, and its memory. A task
/// that does not measure a member leaves it at 0.
struct Cost {
  double buildSeconds = 0;
  double destroySeconds = 0;
  double heapBytes = 0;
  double peakBytes = 0;
};

/// Runs `work` in a new process, in which earlier rounds have not warmed up any memory, and returns
/// its cost. Throws std::runtime_error if the process fails.
Cost InFreshProcess(const std::function<Cost()>& work);

/// Returns the number of bytes allocated on the heap.
double HeapBytes();

/// Returns the processor time of this process in seconds, user and system. Other load on the
/// machine affects it less than it affects the elapsed time.
double ProcessSeconds();

}  // namespace Kestrel::Benchmarks

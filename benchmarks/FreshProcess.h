// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>

namespace Kestrel::Benchmarks {

/// The cost of one piece of work: building an object, destroying it, and the memory for it.
struct Cost {
  double buildSeconds = 0;
  double destroySeconds = 0;
  double heapBytes = 0;
  double peakBytes = 0;
};

/// Runs `work` in a new process, where no memory is warm from an earlier round, and returns its
/// cost. Throws std::runtime_error when the process fails.
Cost InFreshProcess(const std::function<Cost()>& work);

/// The number of bytes that are allocated on the heap.
double HeapBytes();

/// The processor time of this process in seconds, user and system. Other load on the machine
/// affects it less than elapsed time.
double ProcessSeconds();

}  // namespace Kestrel::Benchmarks

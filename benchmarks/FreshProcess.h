// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>

namespace Kestrel::Benchmarks {

/// What one piece of work took: building what it makes, letting go of it, and the memory for it.
struct Cost {
  double buildSeconds = 0;
  double destroySeconds = 0;
  double heapBytes = 0;
  double peakBytes = 0;
};

/// Runs `work` in a process of its own, so that no memory is warm from an earlier round, and gives
/// the cost that it returned. Throws std::runtime_error when that process failed.
Cost InFreshProcess(const std::function<Cost()>& work);

/// The bytes that the heap has handed out and not taken back.
double HeapBytes();

/// The processor time of this process alone in seconds, the kernel's part included, so that a busy
/// machine disturbs less.
double ProcessSeconds();

}  // namespace Kestrel::Benchmarks

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "Usage.h"

#include <cstdlib>
#include <new>

#include "Property.h"

namespace Kestrel::Fuzz {
namespace {

std::size_t allocatedBytes = 0;

long NanosecondsOfThread() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1'000'000'000L + time.tv_nsec;
}

}  // namespace

Usage::Usage(std::size_t inputSize)
    : inputSize_(inputSize),
      bytesBefore_(allocatedBytes),
      nanosecondsBefore_(NanosecondsOfThread()) {}

void Usage::Check(std::size_t outputSize) const {
  const long nanoseconds = NanosecondsOfThread() - nanosecondsBefore_;
  const std::size_t size = inputSize_ + outputSize;
  Require(allocatedBytes - bytesBefore_ <= kMaxBytes + kMaxBytesPerByte * size,
          "memory is bounded by a multiple of the input and the output");
  Require(nanoseconds <= kMaxNanoseconds + kMaxNanosecondsPerByte * static_cast<long>(size),
          "time is bounded by a multiple of the input and the output");
}

void CountAllocation(std::size_t size) { allocatedBytes += size; }

}  // namespace Kestrel::Fuzz

void* operator new(std::size_t size) {
  Kestrel::Fuzz::CountAllocation(size);
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  Kestrel::Fuzz::CountAllocation(size);
  return std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

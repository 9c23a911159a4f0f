// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// When preloaded into a program, makes memory allocation number FAIL_AT fail; if FAIL_FROM_THEN_ON
// is set, also all later ones.

#include <cstddef>
#include <cstdlib>

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

static bool Fails() {
  static long count = 0;
  static long failing = -1;
  static bool fromThenOn = false;
  if (failing < 0) {
    const char* const number = std::getenv("FAIL_AT");
    failing = number == nullptr ? 0 : std::atol(number);
    fromThenOn = std::getenv("FAIL_FROM_THEN_ON") != nullptr;
  }
  ++count;
  return failing > 0 && (count == failing || (fromThenOn && count > failing));
}

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  return Fails() ? nullptr : __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(memory, size);
}
}

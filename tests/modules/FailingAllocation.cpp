// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// When preloaded into a program, makes the memory allocation with the number FAIL_AT fail. If
// FAIL_FROM_THEN_ON is set, all later allocations fail too. If FAIL_COUNT_FILE is set, the program
// writes the number of its allocations to that file when it ends normally. Programs that it
// starts are not affected.
//
// If FAIL_AFTER_NAME_SERVICE is set, the C library reads /etc/nsswitch.conf before the count
// starts. The reason is that glibc 2.36 uses a null pointer when memory runs out there, which no
// program can prevent.

#include <pwd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#define EXPORTED __attribute__((visibility("default")))

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

static long count = 0;
static char countFile[4096];

static long failing = -1;
static bool fromThenOn = false;

static void ReadSettings() {
  const char* const number = std::getenv("FAIL_AT");
  failing = number == nullptr ? 0 : std::atol(number);
  fromThenOn = std::getenv("FAIL_FROM_THEN_ON") != nullptr;
}

static bool Fails() {
  if (failing < 0) {
    if (std::getenv("FAIL_AFTER_NAME_SERVICE") != nullptr) {
      return false;
    }
    ReadSettings();
  }
  const long now = __atomic_add_fetch(&count, 1, __ATOMIC_RELAXED);
  const bool fails = failing > 0 && (now == failing || (fromThenOn && now > failing));
  if (fails) {
    errno = ENOMEM;
  }
  return fails;
}

EXPORTED void* malloc(std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }

EXPORTED void* calloc(std::size_t members, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(members, size);
}

EXPORTED void* realloc(void* memory, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(memory, size);
}

EXPORTED void* memalign(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}

EXPORTED void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

EXPORTED int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  void* const aligned = memalign(alignment, size);
  if (aligned == nullptr) {
    return ENOMEM;
  }
  *memory = aligned;
  return 0;
}
}

namespace {

__attribute__((constructor)) void HideFromChildren() {
  if (std::getenv("FAIL_AFTER_NAME_SERVICE") != nullptr) {
    setpwent();
    endpwent();
    ReadSettings();
  }
  if (const char* const path = std::getenv("FAIL_COUNT_FILE")) {
    std::snprintf(countFile, sizeof countFile, "%s", path);
  }
  unsetenv("LD_PRELOAD");
  unsetenv("FAIL_COUNT_FILE");
}

__attribute__((destructor)) void WriteCount() {
  const long counted = count;
  std::FILE* const file = countFile[0] == '\0' ? nullptr : std::fopen(countFile, "w");
  if (file != nullptr) {
    std::fprintf(file, "%ld\n", counted);
    std::fclose(file);
  }
}

}  // namespace

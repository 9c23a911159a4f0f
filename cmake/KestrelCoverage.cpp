// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Linked in a coverage build in place of functions that may end the process without writing its
// counts: after `_exit`, `abort` and most signals, nothing else would write them.

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): names of gcov and ld
extern "C" {

void __gcov_dump();
void __gcov_reset();
int __real_raise(int signal);
[[noreturn]] void __real_abort();
[[noreturn]] void __real__exit(int status);

// A process may continue after a signal. It then counts from 0, because the file already contains
// what it counted before.
int __wrap_raise(int signal) {
  __gcov_dump();
  __gcov_reset();
  return __real_raise(signal);
}

[[noreturn]] void __wrap_abort() {
  __gcov_dump();
  __real_abort();
}

[[noreturn]] void __wrap__exit(int status) {
  __gcov_dump();
  __real__exit(status);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

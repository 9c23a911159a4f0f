// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/TypedSecrets.h"

#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace Kestrel::AutoCli {

namespace {

/// Prevents core dumps of this process and of the children that it starts, as long as the object
/// exists. The children inherit only the limit. It is one byte: at 0, the system would still pipe a
/// core dump to a program if it is set up to do so.
class NoCoreDumps {
 public:
  NoCoreDumps() : wasDumpable_(prctl(PR_GET_DUMPABLE)) {
    prctl(PR_SET_DUMPABLE, 0);
    hasLimit_ = getrlimit(RLIMIT_CORE, &limit_) == 0;
    if (hasLimit_) {
      const rlimit least = {std::min<rlim_t>(1, limit_.rlim_max), limit_.rlim_max};
      setrlimit(RLIMIT_CORE, &least);
    }
  }
  NoCoreDumps(const NoCoreDumps&) = delete;
  NoCoreDumps& operator=(const NoCoreDumps&) = delete;
  ~NoCoreDumps() {
    if (hasLimit_) {
      setrlimit(RLIMIT_CORE, &limit_);
    }
    if (wasDumpable_ == 1) {
      prctl(PR_SET_DUMPABLE, 1);
    }
  }

 private:
  const int wasDumpable_;
  rlimit limit_ = {};
  bool hasLimit_ = false;
};

struct Held {
  NoCoreDumps noCoreDumps;
  std::vector<std::string> secrets;
};

int depth = 0;  // the number of TypedSecrets objects
std::unique_ptr<Held> held;

// Replaces every `part` of `text` by "***", and wipes the earlier text.
void MaskPart(std::string& text, const std::string& part) {
  constexpr std::string_view kMask = "***";
  if (part.empty()) {
    return;
  }
  std::string masked;
  // Growth would leave a copy of the text in memory, with the secrets that are masked later.
  masked.reserve(kMask.size() * text.size());
  std::size_t done = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, done)) {
    masked.append(text, done, at - done).append(kMask);
    done = at + part.size();
  }
  masked.append(text, done);
  Wipe(text);
  text = std::move(masked);
}

constexpr std::size_t kMaxCopy = 8192;
// More stack than is used by the functions that run a command. The largest part of it is a buffer
// of 64 kB for the output of a child process.
constexpr std::size_t kMaxStack = 96 * 1024;

// The C library copies memory through vector registers, and parts of the last text stay in them.
// Copying zeros of every size class, in both directions, overwrites the registers that it uses.
[[gnu::noinline]] void WipeRegisters() {
  std::array<char, 2 * kMaxCopy> zeros = {};
  // A call through a volatile pointer is not optimised away.
  void* (*volatile copy)(void*, const void*, std::size_t) = std::memmove;
  for (std::size_t size = 1; size <= kMaxCopy; size *= 2) {
    copy(zeros.data() + kMaxCopy, zeros.data(), size);
    copy(zeros.data() + 1, zeros.data(), size);
    copy(zeros.data(), zeros.data() + 1, size);
  }
}

// Wipes the unused part of the stack. Registers are written to the stack when the dynamic linker
// looks up a function at its first call, and when a signal is handled.
[[gnu::noinline]] void WipeStack() {
  std::array<char, kMaxStack> used;
  explicit_bzero(used.data(), used.size());
}

}  // namespace

void Wipe(std::string& text) {
  text.resize(text.capacity());
  explicit_bzero(text.data(), text.size());
  text.clear();
}

TypedSecrets::TypedSecrets() { ++depth; }

TypedSecrets::~TypedSecrets() {
  if (--depth > 0 || held == nullptr) {
    return;
  }
  for (std::string& secret : held->secrets) {
    Wipe(secret);
  }
  WipeRegisters();  // first, or calling the functions that follow could write them to the stack
  WipeStack();
  held.reset();
  _areHeld = false;
}

void TypedSecrets::Expect() {
  if (depth > 0 && held == nullptr) {
    held = std::make_unique<Held>();
  }
}

void TypedSecrets::Add(const std::string& secret) {
  if (held != nullptr) {
    held->secrets.emplace_back();
    // Forces the string to allocate. A short one would be stored inside the string object, and the
    // vector would leave a copy of it in memory when it grows.
    held->secrets.back().reserve(secret.size() + sizeof(std::string));
    held->secrets.back() += secret;
    _areHeld = true;
  }
}

void TypedSecrets::WipeIfSecret(std::string& text) {
  if (AreHeld() &&
      std::find(held->secrets.begin(), held->secrets.end(), text) != held->secrets.end()) {
    Wipe(text);
  }
}

std::string TypedSecrets::Mask(std::string message, std::string (*escape)(const std::string&)) {
  if (!AreHeld()) {
    return message;
  }
  for (const std::string& secret : held->secrets) {
    if (escape != nullptr) {
      std::string escaped = escape(secret);
      const WipeAtEnd wipe(escaped);
      MaskPart(message, escaped);
    }
    MaskPart(message, secret);
  }
  return message;
}

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/TypedSecrets.h"

#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace Kestrel::AutoCli {

namespace {

/// Prevents core dumps of this process and its children during its lifetime.
class NoCoreDumps {
 public:
  NoCoreDumps() : wasDumpable_(prctl(PR_GET_DUMPABLE)) {
    prctl(PR_SET_DUMPABLE, 0);
    hasLimit_ = getrlimit(RLIMIT_CORE, &limit_) == 0;
    if (hasLimit_) {
      const rlimit none = {0, limit_.rlim_max};
      setrlimit(RLIMIT_CORE, &none);
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

void ReplaceAll(std::string& text, const std::string& part) {
  for (std::size_t at = text.find(part); !part.empty() && at != std::string::npos;
       at = text.find(part, at)) {
    text.replace(at, part.size(), "***");
    at += 3;
  }
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
      ReplaceAll(message, escape(secret));
    }
    ReplaceAll(message, secret);
  }
  return message;
}

}  // namespace Kestrel::AutoCli

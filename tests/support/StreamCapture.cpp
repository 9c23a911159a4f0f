// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/StreamCapture.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <iostream>

namespace Kestrel::Testing {

namespace {

void FlushAll() {
  std::cout.flush();
  std::cerr.flush();
  fflush(nullptr);
}

// Discards what was read ahead from the previous input.
void DiscardInput() {
  __fpurge(stdin);
  clearerr(stdin);
  std::cin.clear();
}

int Redirect(int descriptor, int to) {
  const int original = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
  dup2(to, descriptor);
  return original;
}

void Restore(int descriptor, int original) {
  dup2(original, descriptor);
  close(original);
}

}  // namespace

StreamCapture::StreamCapture(int descriptor) : descriptor_(descriptor), original_(-1) {
  FlushAll();
  original_ = Redirect(descriptor_, file_.GetDescriptor());
}

StreamCapture::~StreamCapture() {
  FlushAll();
  Restore(descriptor_, original_);
}

std::string StreamCapture::GetText() {
  FlushAll();
  return file_.Read();
}

ScopedInput::ScopedInput(std::string_view text) {
  const MemoryFile file;
  file.Write(text);
  original_ = Redirect(STDIN_FILENO, file.GetDescriptor());
  DiscardInput();
}

ScopedInput::~ScopedInput() {
  DiscardInput();
  Restore(STDIN_FILENO, original_);
}

}  // namespace Kestrel::Testing

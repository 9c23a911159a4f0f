// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/StreamCapture.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace Kestrel::Testing {

namespace {

int MakeUnnamedFile() {
  std::string path = std::filesystem::temp_directory_path().string() + "/kestrel-XXXXXX";
  const int file = mkostemp(path.data(), O_CLOEXEC);
  if (file == -1) {
    throw std::runtime_error("Unable to make the file " + path);
  }
  unlink(path.c_str());
  return file;
}

void FlushAll() {
  std::cout.flush();
  std::cerr.flush();
  fflush(nullptr);
}

// Whatever was read ahead belongs to the old input.
void ForgetInput() {
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

StreamCapture::StreamCapture(int descriptor)
    : descriptor_(descriptor), original_(-1), file_(MakeUnnamedFile()) {
  FlushAll();
  original_ = Redirect(descriptor_, file_);
}

StreamCapture::~StreamCapture() {
  FlushAll();
  Restore(descriptor_, original_);
  close(file_);
}

std::string StreamCapture::GetText() {
  FlushAll();
  std::string text;
  std::array<char, 65536> buffer;
  off_t position = 0;
  for (;;) {
    const ssize_t count = pread(file_, buffer.data(), buffer.size(), position);
    if (count <= 0) {
      return text;
    }
    text.append(buffer.data(), static_cast<std::size_t>(count));
    position += count;
  }
}

ScopedInput::ScopedInput(std::string_view text) {
  const int file = MakeUnnamedFile();
  if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
      lseek(file, 0, SEEK_SET) != 0) {
    throw std::runtime_error("Unable to prepare the input");
  }
  original_ = Redirect(STDIN_FILENO, file);
  close(file);
  ForgetInput();
}

ScopedInput::~ScopedInput() {
  ForgetInput();
  Restore(STDIN_FILENO, original_);
}

}  // namespace Kestrel::Testing

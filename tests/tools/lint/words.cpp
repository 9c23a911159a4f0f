// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Appends the number of its words and then the words, which are its name and its arguments, to the
// file in the variable LINT_WORDS. A NUL byte ends the number and each word. The exit status is 1
// if the variable LINT_STATUS is set and does not begin with 0, or if the file cannot be written.

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  const char* const file = std::getenv("LINT_WORDS");
  if (file == nullptr) {
    return 1;
  }
  std::string text = std::to_string(argc);
  text += '\0';
  for (int i = 0; i < argc; ++i) {
    text += argv[i];
    text += '\0';
  }
  const int descriptor = open(file, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  const bool isWritten = descriptor >= 0 && write(descriptor, text.data(), text.size()) ==
                                                static_cast<ssize_t>(text.size());
  const char* const status = std::getenv("LINT_STATUS");
  return isWritten && (status == nullptr || *status == '0') ? 0 : 1;
}

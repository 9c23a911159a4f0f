// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/Witness.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>

namespace Kestrel::Testing {

std::string Witness(const std::string& command) {
  std::string text;
  FILE* const pipe = ::popen(("export LC_ALL=C; " + command).c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << "Unable to start: " << command;
    return text;
  }
  std::array<char, 4096> buffer;
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    text.append(buffer.data(), count);
  }
  EXPECT_EQ(::pclose(pipe), 0) << command;
  return text;
}

std::vector<std::string> WitnessLines(const std::string& command) {
  std::istringstream in(Witness(command));
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> WordsIn(const std::string& text, std::size_t limit) {
  std::istringstream in(text);
  std::vector<std::string> words;
  for (std::string word; (limit == 0 || words.size() + 1 < limit) && in >> word;) {
    words.push_back(word);
  }
  if (limit != 0 && words.size() + 1 == limit) {
    std::string rest;
    std::getline(in >> std::ws, rest, '\0');
    words.push_back(rest);
  }
  return words;
}

}  // namespace Kestrel::Testing

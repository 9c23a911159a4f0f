// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/Golden.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

namespace Kestrel::Testing {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool Rewrite(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  return static_cast<bool>(file.flush());
}

bool IsRewriting() {
  const char* const choice = std::getenv("KESTREL_REWRITE_GOLDEN");
  return choice != nullptr && std::string(choice) == "1";
}

// Returns the line of `text` that contains byte `at`, quoted.
std::string ShowLine(const std::string& text, std::size_t at) {
  const std::size_t before = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
  const std::size_t start = before == std::string::npos ? 0 : before + 1;
  const std::size_t end = std::min(text.find('\n', at), text.size());
  return ::testing::PrintToString(text.substr(start, end - start));
}

class GoldenMatcher : public ::testing::MatcherInterface<std::string> {
 public:
  explicit GoldenMatcher(std::string name)
      : name_(std::move(name)), path_(fs::path(KESTREL_GOLDEN_DIR) / (name_ + ".txt")) {}

  bool MatchAndExplain(std::string text, ::testing::MatchResultListener* listener) const override {
    if (IsRewriting()) {
      return Rewrite(path_, text);
    }
    const std::optional<std::string> golden = Read(path_);
    if (!golden.has_value()) {
      *listener << "which cannot be read; KESTREL_REWRITE_GOLDEN=1 creates it";
      return false;
    }
    if (text == *golden) {
      return true;
    }
    const auto differing = std::mismatch(text.begin(), text.end(), golden->begin(), golden->end());
    const auto at = static_cast<std::size_t>(differing.first - text.begin());
    *listener << "whose line " << 1 + std::count(text.begin(), differing.first, '\n')
              << " differs: expected " << ShowLine(*golden, at) << ", got " << ShowLine(text, at);
    return false;
  }

  void DescribeTo(std::ostream* out) const override { *out << "equals " << path_; }
  void DescribeNegationTo(std::ostream* out) const override { *out << "differs from " << path_; }

 private:
  std::string name_;
  fs::path path_;
};

}  // namespace

::testing::Matcher<std::string> MatchesGolden(const std::string& name) {
  return ::testing::Matcher<std::string>(new GoldenMatcher(name));
}

}  // namespace Kestrel::Testing

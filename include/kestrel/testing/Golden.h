// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "kestrel/testing/Verdict.h"

namespace Kestrel::Testing {

/// Returns the line of `text` that contains the byte at `at`, without its line end.
inline std::string LineAt(const std::string& text, std::size_t at) {
  const std::size_t before = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
  const std::size_t start = before == std::string::npos ? 0 : before + 1;
  return text.substr(start, std::min(text.find('\n', at), text.size()) - start);
}

/// Replaces the content of a file, whose folder is created if necessary.
inline Verdict RewriteGolden(const std::string& text, const std::filesystem::path& file) {
  Verdict verdict;
  std::error_code error;  // reported by the attempt to write
  std::filesystem::create_directories(file.parent_path(), error);
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!(out << text << std::flush)) {
    verdict.Add("cannot write " + file.string());
  }
  return verdict;
}

/// Checks that `text` equals the content of a file, byte for byte. With KESTREL_REWRITE_GOLDEN=1 in
/// the environment, it writes the file instead; review the difference as a change of behaviour.
inline Verdict ExpectGolden(const std::string& text, const std::filesystem::path& file) {
  const char* const choice = std::getenv("KESTREL_REWRITE_GOLDEN");
  if (choice != nullptr && std::string(choice) == "1") {
    return RewriteGolden(text, file);
  }
  Verdict verdict;
  std::ifstream in(file, std::ios::binary);
  const std::string golden((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!in) {
    verdict.Add("cannot read " + file.string() + "; KESTREL_REWRITE_GOLDEN=1 creates it");
  } else if (text != golden) {
    const auto differing = std::mismatch(text.begin(), text.end(), golden.begin(), golden.end());
    const auto at = static_cast<std::size_t>(differing.first - text.begin());
    verdict.Add("line " + std::to_string(1 + std::count(text.begin(), differing.first, '\n')) +
                " differs from " + file.string() + ": expected '" + LineAt(golden, at) +
                "', got '" + LineAt(text, at) + "'");
  }
  return verdict;
}

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/ScopedTempDir.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace Kestrel::Testing {

ScopedTempDir::ScopedTempDir()
    : path_(std::filesystem::temp_directory_path().string() + "/kestrel-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::runtime_error("Unable to create the folder " + path_);
  }
}

ScopedTempDir::~ScopedTempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string ScopedTempDir::Write(const std::string& name, std::string_view text) const {
  const std::filesystem::path file = GetPath(name);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  if (!out.flush()) {
    throw std::runtime_error("Unable to write " + file.string());
  }
  return file.string();
}

std::string ScopedTempDir::MakeDirectory(const std::string& name) const {
  std::filesystem::create_directories(GetPath(name));
  return GetPath(name);
}

std::string ScopedTempDir::Read(const std::string& name) const {
  std::ifstream in(GetPath(name), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace Kestrel::Testing

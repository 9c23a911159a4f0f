// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/isolation/PluginFaults.h"

#include <dlfcn.h>

#include <exception>

#include "kestrel/KestrelException.h"

namespace Kestrel::Isolation {

std::string PathForLoader(const std::string& file) {
  return file.find('/') == std::string::npos ? "./" + file : file;
}

std::optional<std::string> FindMissingSymbol(const std::string& file) {
  void* const object = dlopen(PathForLoader(file).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (object != nullptr) {
    dlclose(object);
    return std::nullopt;
  }
  const char* const error = dlerror();
  const std::string text = error == nullptr ? "" : error;
  return text.find("undefined symbol") == std::string::npos ? std::nullopt : std::optional(text);
}

std::optional<std::string> DescribeForeignException() {
  try {
    throw;
  } catch (const KestrelException&) {
    return std::nullopt;
  } catch (const std::exception& error) {
    return std::string("a std::exception: ") + error.what();
  } catch (...) {
    return "something that is not a std::exception";
  }
}

}  // namespace Kestrel::Isolation

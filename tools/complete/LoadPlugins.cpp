// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/LoadPlugins.h"

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <system_error>

#include "kestrel/KestrelException.h"
#include "tools/complete/TrustedFile.h"
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Complete {

using AutoCli::Dispatcher;
using Vexil::TypedOption;

namespace {

void LoadTrusted(Dispatcher& dispatcher, const std::string& file) {
  if (!IsTrustedFile(file)) {
    return;
  }
  try {
    dispatcher.AddPlugin(file);
  } catch (const KestrelException&) {  // NOLINT(bugprone-empty-catch): the tool reports it
  }
}

// Loads files in byte order, like the dispatcher.
void LoadFolder(Dispatcher& dispatcher, const std::string& folder) {
  std::error_code error;
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    files.insert(entry.path().string());
  }
  for (const std::string& file : files) {
    LoadTrusted(dispatcher, file);
  }
}

}  // namespace

void LoadPlugins(Dispatcher& dispatcher, const std::vector<TypedOption>& options) {
  dispatcher.RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  dispatcher.AddDefaultDirectories();
  for (const TypedOption& option : options) {
    if (option.name == "plugin-dir") {
      LoadFolder(dispatcher, option.value + "/lib64");
      LoadFolder(dispatcher, option.value);
    }
  }
  for (const TypedOption& option : options) {
    if (option.name == "plugin") {
      LoadTrusted(dispatcher, option.value);
    }
  }
}

}  // namespace Kestrel::Complete

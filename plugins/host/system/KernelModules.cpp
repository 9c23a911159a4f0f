// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KernelModules.h"

#include <sys/stat.h>

#include <algorithm>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

bool IsFolder(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// As in "snd_pcm,snd_hda,". A module that cannot be unloaded has "[permanent]" in its list; "-" is
// an empty list.
std::vector<std::string> ParseUsers(std::string_view text) {
  std::vector<std::string> users;
  for (const std::string_view user : Split(text, ',')) {
    if (!user.empty() && user != "-" && user.front() != '[') {
      users.emplace_back(user);
    }
  }
  return users;
}

}  // namespace

std::vector<KernelModule> ParseModules(std::string_view text) {
  std::vector<KernelModule> modules;
  for (const std::string_view line : SplitLines(text)) {
    const auto words = SplitWords(line);
    const auto size = words.size() < 5 ? std::nullopt : ParseNumber(words[1]);
    if (!size) {
      continue;
    }
    KernelModule module;
    module.name = words[0];
    module.size = *size;
    // "-" if the kernel cannot unload modules.
    module.references = ParseNumber(words[2]).value_or(-1);
    module.users = ParseUsers(words[3]);
    module.state = words[4];
    modules.push_back(std::move(module));
  }
  return modules;
}

std::vector<KernelModule> ReadModules(const std::string& proc) {
  const auto text = ReadFile(proc + "/modules");
  if (!text) {
    RequireEntries(proc);
    return {};
  }
  auto modules = ParseModules(*text);
  std::sort(
      modules.begin(), modules.end(),
      [](const KernelModule& left, const KernelModule& right) { return left.name < right.name; });
  return modules;
}

bool HasModule(const std::string& proc, const std::string& sys, std::string name) {
  std::replace(name.begin(), name.end(), '-', '_');
  const auto modules = ReadModules(proc);
  const bool isLoaded =
      std::any_of(modules.begin(), modules.end(),
                  [&name](const KernelModule& module) { return module.name == name; });
  return isLoaded || IsFolder(sys + "/module/" + name);
}

}  // namespace Kestrel::Host

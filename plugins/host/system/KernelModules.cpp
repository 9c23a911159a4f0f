// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KernelModules.h"

#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

bool IsFolder(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0) {
    return S_ISDIR(status.st_mode);
  }
  if (!IsAbsence(errno)) {
    throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
  }
  return false;
}

std::string WithUnderscores(std::string_view name) {
  std::string changed(name);
  std::replace(changed.begin(), changed.end(), '-', '_');
  return changed;
}

// Returns the name of the module whose file is listed in a line such as
// "kernel/drivers/net/tun.ko.xz:", which may continue with the modules it needs.
std::string ModuleOfLine(std::string_view line) {
  const std::string_view path = line.substr(0, line.find(':'));
  const std::string_view file = path.substr(path.rfind('/') + 1);
  return WithUnderscores(file.substr(0, file.find(".ko")));
}

// Whether a list of module files contains the module.
bool ListsModule(const std::string& path, const std::string& name) {
  const std::string text = ReadRequiredFile(path);
  const auto lines = SplitLines(text);
  return std::any_of(lines.begin(), lines.end(),
                     [&name](std::string_view line) { return ModuleOfLine(line) == name; });
}

// Parses a list such as "snd_pcm,snd_hda,". It contains "[permanent]" if the module cannot be
// unloaded; "-" is an empty list.
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
      throw KestrelException("Unable to understand the list of modules: '" + std::string(line) +
                             "'");
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
  const auto text = ReadOptionalFile(proc + "/modules");
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

std::string ModuleFolder() {
  utsname kernel = {};
  ::uname(&kernel);  // can fail only for an invalid address
  return std::string("/lib/modules/") + kernel.release;
}

bool HasModule(const std::string& proc, const std::string& sys, const std::string& modules,
               const std::string& name) {
  const std::string kernelName = WithUnderscores(name);
  const auto loaded = ReadModules(proc);
  const bool isLoaded =
      std::any_of(loaded.begin(), loaded.end(),
                  [&kernelName](const KernelModule& module) { return module.name == kernelName; });
  if (isLoaded || IsFolder(sys + "/module/" + kernelName)) {
    return true;
  }
  if (!IsFolder(modules)) {
    throw KestrelException("Unable to tell whether the kernel has the module '" + name +
                           "': there is no folder " + modules);
  }
  if (ListsModule(modules + "/modules.builtin", kernelName)) {
    return true;
  }
  if (!ListsModule(modules + "/modules.dep", kernelName)) {
    throw KestrelException("There is no module '" + name + "'");
  }
  return false;
}

}  // namespace Kestrel::Host

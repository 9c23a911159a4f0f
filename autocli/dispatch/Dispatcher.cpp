// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Dispatcher.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <optional>
#include <utility>

#include "autocli/dispatch/CommandCall.h"
#include "autocli/plugins/DefaultFolder.h"
#include "autocli/plugins/PluginFiles.h"
#include "autocli/text/Report.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/InternalPlugin.h"
#include "kestrel/autocli/SharedLibraryPlugin.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "kestrel/platform/TessaLibs.h"

namespace Kestrel::AutoCli {

namespace {

constexpr const char* kDefaultDirectory = KESTREL_PLUGIN_DIR;

enum class Folder { Default, Named };

template <class FilePlugin>
std::shared_ptr<Plugin> MakePlugin(const std::string& path, Folder folder) {
  const std::shared_ptr<FilePlugin> plugin = FilePlugin::New(path);
  if (folder == Folder::Default) {
    DefaultFolder::Mark(*plugin);
  }
  return plugin;
}

// Returns the plug-in in a file, or null if the file is not a plug-in.
std::shared_ptr<Plugin> MakePlugin(const std::string& path, Folder folder) {
  switch (KindOfPluginFile(path)) {
    case PluginFileKind::SharedLibrary:
      return MakePlugin<SharedLibraryPlugin>(path, folder);
    case PluginFileKind::Descriptor:
      return MakePlugin<XmlPlugin>(path, folder);
    case PluginFileKind::Other:
      break;
  }
  return nullptr;
}

void LoadPlugin(Dispatcher& dispatcher, const std::string& path, Folder folder) {
  const std::shared_ptr<Plugin> plugin = MakePlugin(path, folder);
  if (plugin == nullptr) {
    return;
  }
  plugin->Initialize();
  dispatcher.RegisterPlugin(plugin);
}

void LoadFolder(Dispatcher& dispatcher, const std::string& dir, bool reportMissing, Folder folder) {
  const std::optional<std::vector<std::string>> paths = ListDirectory(dir);
  if (!paths.has_value()) {
    if (reportMissing) {
      Report("Unable to open directory " + dir + " for plugin registration");
    }
    return;
  }
  for (const std::string& path : *paths) {
    try {
      LoadPlugin(dispatcher, path, folder);
    } catch (const KestrelException& error) {
      Report("Error loading plugin " + path + " skipping.  Error was: " + error.what());
    }
  }
}

void LoadFolders(Dispatcher& dispatcher, const std::string& dir, Folder folder) {
  LoadFolder(dispatcher, dir + "/lib64", false, folder);
  LoadFolder(dispatcher, dir, true, folder);
}

// Whether destroying the plug-in unloads code.
bool UnmapsCode(const std::shared_ptr<Plugin>& plugin) {
  return dynamic_cast<const SharedLibraryPlugin*>(plugin.get()) != nullptr;
}

std::string RegistrationError(const std::string& plugin, const std::string& cause) {
  return "Error while trying to register the plugin " + plugin + " " + cause +
         " The functionality in " + plugin + " will not be available until this issue is resolved.";
}

}  // namespace

Dispatcher::Dispatcher() {
  FeatureState_InitDeltaMode();
  const std::shared_ptr<Plugin> internal = InternalPlugin::New();
  root_ = RootNamespace::New(this);
  internal->Initialize();
  RegisterPlugin(internal);
}

Dispatcher::~Dispatcher() = default;

std::shared_ptr<RootNamespace> Dispatcher::GetRootNamespace() const { return root_; }

void Dispatcher::AddPlugin(const std::string& path) { LoadPlugin(*this, path, Folder::Named); }

void Dispatcher::AddExternalDirectory(const std::string& dir) {
  LoadFolders(*this, dir, Folder::Named);
}

void Dispatcher::AddExternalDirectoryInt(const std::string& dir, bool reportMissing) {
  LoadFolder(*this, dir, reportMissing, Folder::Named);
}

void Dispatcher::AddDefaultDirectories() {
  const std::string dir = kDefaultDirectory;
  LoadFolders(*this, dir, Folder::Default);
  LoadFolders(*this, dir + "/ext", Folder::Default);
}

void Dispatcher::RegisterPlugin(std::shared_ptr<Plugin> plugin) {
  if (plugin == nullptr) {
    throw KestrelException("Null plugin passed to RegisterPlugin");
  }
  // The plug-in is retained even if registration fails: nodes that it has registered stay in the
  // tree and need its code. An exception of one of its own classes needs it too.
  const bool unmapsCode = UnmapsCode(plugin);
  if (unmapsCode) {
    retained_.push_back(plugin);
  }
  RegisterNamespacesOf(*plugin);
  RegisterFormattersOf(plugin);
  plugins_.push_back(plugin);
  if (unmapsCode) {
    // The plug-in need not be the last one: its entry point may have loaded others that failed.
    const auto place = std::find(retained_.rbegin(), retained_.rend(), plugin);
    retained_.erase(std::next(place).base());
  }
}

void Dispatcher::RegisterNamespacesOf(Plugin& plugin) {
  try {
    plugin.RegisterNamespaces(root_);
  } catch (const KestrelException& error) {
    throw KestrelException(RegistrationError(plugin.GetName(), error.what()));
  }
}

// All names are checked before any is added.
void Dispatcher::RegisterFormattersOf(const std::shared_ptr<Plugin>& plugin) {
  const std::vector<std::shared_ptr<Formatter>>& formatters = plugin->GetFormatters();
  std::vector<std::string> names;
  names.reserve(formatters.size());
  for (const std::shared_ptr<Formatter>& formatter : formatters) {
    if (formatter == nullptr) {
      continue;
    }
    const auto owner = formatterOwners_.find(formatter->GetName());
    if (owner != formatterOwners_.end()) {
      // Two spaces before and after: scripts match this message.
      throw KestrelException(RegistrationError(
          plugin->GetName(), " this plugin has a formatter " + formatter->GetName() +
                                 " that was already registered from the plugin " +
                                 owner->second->GetName() + " "));
    }
    names.push_back(formatter->GetName());
  }
  for (std::string& name : names) {
    formatterOwners_[std::move(name)] = plugin;
  }
}

void Dispatcher::ResetRegistrations() {
  std::copy_if(plugins_.begin(), plugins_.end(), std::back_inserter(retained_), UnmapsCode);
  plugins_.clear();
}

std::vector<std::string> Dispatcher::GetPluginNames() const {
  std::vector<std::string> names;
  names.reserve(plugins_.size());
  for (const std::shared_ptr<Plugin>& plugin : plugins_) {
    names.push_back(plugin->GetName());
  }
  return names;
}

bool Dispatcher::HasFormatter(const std::string& name) const {
  const auto owner = formatterOwners_.find(name);
  return owner != formatterOwners_.end() && owner->second->HasFormatter(name);
}

std::shared_ptr<Formatter> Dispatcher::GetFormatter(const std::string& name) const {
  const auto owner = formatterOwners_.find(name);
  if (owner == formatterOwners_.end() || !owner->second->HasFormatter(name)) {
    return nullptr;
  }
  return owner->second->GetFormatter(name);
}

std::vector<std::shared_ptr<Formatter>> Dispatcher::GetFormatters() const {
  std::vector<std::shared_ptr<Formatter>> formatters;
  formatters.reserve(formatterOwners_.size());
  for (const auto& [name, owner] : formatterOwners_) {
    std::shared_ptr<Formatter> formatter = owner->GetFormatter(name);
    if (formatter != nullptr) {
      formatters.push_back(std::move(formatter));
    }
  }
  return formatters;
}

std::shared_ptr<Command> Dispatcher::GetCommand(std::shared_ptr<CommandInput> input,
                                                std::shared_ptr<CommandOutput> output) {
  std::list<std::string> path = input->GetCommandPath();
  std::shared_ptr<NamespaceNode> node;
  try {
    node = root_->ResolveNode(path);
  } catch (const KestrelException& error) {
    output->AddErrorMessage(error.what());
  }
  if (node == nullptr) {
    output->AddErrorMessage("Unable to find command");
    return nullptr;
  }
  if (node->GetType() != NodeType::Command) {
    output->AddErrorMessage("Path refers to a namespace, not a command.");
    return nullptr;
  }
  return std::dynamic_pointer_cast<Command>(node);
}

bool Dispatcher::ExecuteCommand(std::shared_ptr<CommandInput> input,
                                std::shared_ptr<CommandOutput> output) {
  const std::shared_ptr<Command> command = GetCommand(input, output);
  return command != nullptr && CallCommand(*command, input, output);
}

FormatParameters Dispatcher::GetDefaultOutputFormatParameters(
    std::shared_ptr<CommandInput> input, std::shared_ptr<CommandOutput> output) {
  const std::shared_ptr<Command> command = GetCommand(std::move(input), std::move(output));
  return command != nullptr ? command->GetDefaultOutputFormatParameters() : FormatParameters();
}

bool Dispatcher::FormatOutput(const std::shared_ptr<CallSpec::Output>& output,
                              FormatParameters& params, DisplayContext& display,
                              std::ostream& out) {
  const std::string& name = params.GetFormatter();
  if (name.empty()) {
    return true;
  }
  const std::shared_ptr<Formatter> formatter = GetFormatter(name);
  if (formatter == nullptr) {
    output->AddErrorMessage("Unable to find requested formatter: " + name);
    return false;
  }
  try {
    formatter->Format(output, params, display, out);
  } catch (const KestrelException& error) {
    output->AddErrorMessage(error.what());
    return false;
  }
  return true;
}

}  // namespace Kestrel::AutoCli

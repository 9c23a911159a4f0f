// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <list>
#include <memory>
#include <string>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "tools/lint/Checks.h"

namespace Kestrel::Lint {

using AutoCli::Namespace;
using AutoCli::XmlPlugin;

namespace {

bool Contains(const std::string& text, const char* what) {
  return text.find(what) != std::string::npos;
}

void ReportPath(const Element& element, const std::string& text, const Host& host,
                FileReport& report) {
  const std::string what = "the tree refuses this: " + text;
  if (Contains(text, "already") || Contains(text, "Duplicate")) {
    const auto owner = host.owners.find(element.Get("path"));
    const std::string where =
        owner == host.owners.end() ? "" : " (it is declared in " + owner->second + ")";
    report.Add("path-duplicate", element, what + where,
               Contains(text, "Duplicate") ? "use the same description" : "use another path");
  } else if (Contains(text, "Unable to find")) {
    report.Add("path-undeclared", element, what,
               "declare the namespace before it, or name the plug-in that declares it first");
  } else {
    report.Add("path-name", element, what,
               "use letters and digits, begin with a lower-case letter or a digit, and write no "
               "two capitals in a row");
  }
}

/// Registers what `add` adds to a plug-in of this file. If the loader refuses a namespace, an
/// empty one takes its place in the tree; a command that it refuses is left out.
template <typename Add>
void Register(const Element& element, Add add, Host& host, FileReport& report) {
  const std::shared_ptr<XmlPlugin> plugin = XmlPlugin::New(report.GetFile());
  try {
    add(*plugin);
  } catch (const KestrelException&) {
    if (element.name == "namespace") {  // otherwise, everything below it would be reported
      InsertNode(element.Get("path"), Namespace::New(), report.GetFile(), host);
    }
    return;
  }
  try {
    plugin->RegisterNamespaces(host.dispatcher.GetRootNamespace());
    host.owners.emplace(element.Get("path"), report.GetFile());
  } catch (const KestrelException& error) {
    ReportPath(element, error.what(), host, report);
  }
}

}  // namespace

void InsertNode(const std::string& path, const std::shared_ptr<AutoCli::NamespaceNode>& node,
                const std::string& file, Host& host) {
  std::list<std::string> words = XmlPlugin::SplitPath(path);
  if (words.empty()) {
    return;
  }
  const std::string name = words.back();
  words.pop_back();
  const auto root = host.dispatcher.GetRootNamespace();
  try {
    const auto parent = std::dynamic_pointer_cast<Namespace>(
        words.empty() ? root->GetThis() : root->ResolveNode(words));
    if (parent != nullptr && !parent->HasNamespaceNode(name)) {
      parent->RegisterNamespaceNode(node, name);
      host.owners.emplace(path, file);
    }
  } catch (const KestrelException&) {  // NOLINT(bugprone-empty-catch): reported by the callers
  }
}

void CheckPaths(const Element& root, Host& host, FileReport& report) {
  for (const Element* namespaces : root.FindAll("namespaces")) {
    for (const Element* declared : namespaces->FindAll("namespace")) {
      Register(
          *declared, [&](XmlPlugin& plugin) { plugin.AddNamespace(declared->node); }, host, report);
    }
  }
  for (const Element* command : FindCommands(root)) {
    Register(
        *command, [&](XmlPlugin& plugin) { plugin.AddCommand(command->node); }, host, report);
  }
}

}  // namespace Kestrel::Lint

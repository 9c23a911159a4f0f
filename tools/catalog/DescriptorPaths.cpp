// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/DescriptorPaths.h"

#include <cstddef>
#include <fstream>
#include <list>
#include <memory>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/XmlPlugin.h"

namespace Kestrel::Catalog {

using AutoCli::Namespace;
using AutoCli::NamespaceNode;
using AutoCli::NodeType;
using AutoCli::XmlPlugin;

namespace {

/// A root that returns itself for every path and never has a child. So a descriptor registers all
/// nodes directly in this root, and no parent needs to exist.
class RecordingRoot : public Namespace {
 public:
  static std::shared_ptr<RecordingRoot> New() { return std::make_shared<RecordingRoot>(); }

  DescriptorPaths paths;

  bool HasNamespaceNode(const std::string& /*name*/) override { return false; }

  std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& /*name*/) override {
    return nullptr;
  }

  std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override {
    for (const std::string& word : path) {
      above_ += word + " ";
    }
    return GetThis();
  }

  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) override {
    auto& list = node->GetType() == NodeType::Command ? paths.commands : paths.namespaces;
    list.push_back(std::exchange(above_, "") + name);
  }

  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) override {
    RegisterNamespaceNode(std::move(node), std::string(name));
  }

 private:
  std::string above_;  // the path of the next node's parent, with a space after each word
};

/// Returns as much of a file as can be read.
std::string ReadFile(const std::string& file) {
  std::ifstream in(file, std::ios_base::binary);
  std::string text;
  char block[1 << 14];
  while (in.read(block, sizeof(block)) || in.gcount() > 0) {
    text.append(block, static_cast<std::size_t>(in.gcount()));
  }
  return text;
}

}  // namespace

DescriptorPaths ReadDescriptorPaths(const std::string& file) {
  std::optional<DescriptorPaths> paths = ScanDescriptor(ReadFile(file));
  if (paths.has_value()) {
    return std::move(*paths);
  }
  try {
    return LoadDescriptorPaths(file);
  } catch (const KestrelException&) {
    return {};  // Not a descriptor. If it has been loaded, the file has changed since then.
  }
}

DescriptorPaths LoadDescriptorPaths(const std::string& file) {
  const std::shared_ptr<XmlPlugin> plugin = XmlPlugin::New(file);
  plugin->Initialize();
  const std::shared_ptr<RecordingRoot> root = RecordingRoot::New();
  plugin->RegisterNamespaces(root);
  return std::move(root->paths);
}

}  // namespace Kestrel::Catalog

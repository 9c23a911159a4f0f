// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlPlugin.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "autocli/descriptors/NodeInsertion.h"
#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlEventTree.h"
#include "autocli/descriptors/XmlNode.h"
#include "autocli/descriptors/XmlTree.h"
#include "autocli/plugins/CheckedFile.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlUtil.h"

namespace Kestrel::AutoCli {

namespace {

/// Whether `file` is a regular file. Reading a device or a pipe could block the start.
bool IsRegularFile(const FileDescriptor& file) {
  struct stat status = {};
  return fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

/// A descriptor that was read, in one of two kinds of trees.
struct Descriptor {
  std::unique_ptr<XmlEventTree> tree;
  XmlDocument document;

  /// Returns the root element; null if the descriptor was not read.
  const xmlNode* GetRoot() const {
    return tree != nullptr ? tree->GetRoot() : RootOf(document.get());
  }
};

/// Returns the content of a file; the empty string if it cannot be read or is larger than an
/// ordinary descriptor.
std::string ReadOrdinaryFile(const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status = {};
  if (!file.IsOpen() || fstat(file.Get(), &status) != 0 ||
      status.st_size > static_cast<off_t>(XmlEventTree::kMaxSize)) {
    return std::string();
  }
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  const bool isRead = read(file.Get(), content.data(), content.size()) == status.st_size;
  return isRead ? content : std::string();
}

/// Reads the descriptor at `path`; calls `parse` for one that is not ordinary.
template <typename Parse>
Descriptor ReadFile(const std::string& path, Parse parse) {
  Descriptor descriptor;
  descriptor.tree = XmlEventTree::Read(ReadOrdinaryFile(path));
  if (descriptor.tree == nullptr) {
    descriptor.document = parse();
  }
  return descriptor;
}

Descriptor ReadOpenFile(const FileDescriptor& file, const std::string& path) {
  return ReadFile(PathOfDescriptor(file.Get()), [&] { return ParseXmlFile(file, path); });
}

/// Reads a file by its path, because it cannot be read through a file descriptor: there is no
/// /proc, or the system does not find the file or does not permit reading it.
Descriptor ReadFileByPath(const std::string& path) {
  return ReadFile(path, [&] { return ParseXmlFile(path); });
}

Descriptor ReadCheckedFile(const std::string& path) {
  const CheckedFile file = OpenCheckedFile(path);
  if (!file.descriptor.IsOpen()) {
    ReportMissingXmlFile(path);
    return {};
  }
  return IsRegularFile(file.descriptor) ? ReadOpenFile(file.descriptor, path) : Descriptor();
}

Descriptor ReadAnyFile(const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_PATH | O_CLOEXEC));
  if (file.IsOpen() && !IsRegularFile(file)) {
    return {};
  }
  const bool isReadable = file.IsOpen() && access(PathOfDescriptor(file.Get()).c_str(), R_OK) == 0;
  return isReadable ? ReadOpenFile(file, path) : ReadFileByPath(path);
}

Descriptor ParseDescriptor(const std::string& path, bool isInDefaultFolder) {
  Descriptor descriptor =
      IsTrustRequired(isInDefaultFolder) ? ReadCheckedFile(path) : ReadAnyFile(path);
  if (descriptor.GetRoot() == nullptr) {
    throw KestrelException("Unable to parse XML descriptor: " + path);
  }
  return descriptor;
}

const xmlNode* RequireChild(const xmlNode* command, const char* name) {
  const xmlNode* child = XmlUtil_FindChildNode(command, name);
  if (child == nullptr) {
    throw KestrelException("Unable to find <" + std::string(name) +
                           "> element, which is required for a command.");
  }
  return child;
}

}  // namespace

std::shared_ptr<XmlPlugin> XmlPlugin::New(const std::string& path) {
  return std::make_shared<XmlPlugin>(path, ConstructionKey());
}

XmlPlugin::XmlPlugin(const std::string& path, ConstructionKey) : path_(path) {}
XmlPlugin::~XmlPlugin() = default;

void XmlPlugin::Initialize() {
  try {
    const Descriptor descriptor = ParseDescriptor(path_, isInDefaultFolder_);
    RefuseLargeExpansion(descriptor.GetRoot());
    ReadRoot(descriptor.GetRoot());
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to handle XML Plugin " + path_ +
                           ".  There was an error while parsing: " + error.what());
  }
}

void XmlPlugin::ReadRoot(const xmlNode* root) {
  if (XmlUtil_GetContentForChildByTag(root, "version") != "1.0.0") {
    throw KestrelException("Unknown vexil extention version.  Valid versions are: '1.0.0'");
  }
  const xmlNode* namespaces = XmlUtil_FindChildNode(root, "namespaces");
  if (namespaces != nullptr) {
    AddNamespaces(namespaces);
  }
  const xmlNode* commands = XmlUtil_FindChildNode(root, "commands");
  if (commands != nullptr) {
    AddCommands(commands);
  }
  if (namespaces == nullptr && commands == nullptr) {
    throw KestrelException("Unable to find any namespaces or commands to register for plugin " +
                           path_);
  }
}

const std::string& XmlPlugin::GetName() const { return path_; }

void XmlPlugin::RegisterNamespaces(std::shared_ptr<Namespace> root) {
  // All nodes are checked before the first is inserted.
  for (const auto& [path, node] : registrations_) {
    if (path.empty()) {
      throw KestrelException("Invalid NULL registration found in XML plugin: " + path_ +
                             " all namespaces and commands must have a valid 'path' field");
    }
    if (node == nullptr) {
      throw KestrelException("Invalid null node: " + path);
    }
    RefuseTakenPath(path, node, root);
  }
  for (const auto& [path, node] : registrations_) {
    InsertNode(path, node, root);
  }
}

bool XmlPlugin::HasFormatter(const std::string&) { return false; }

std::shared_ptr<Formatter> XmlPlugin::GetFormatter(const std::string&) {
  // Spelled so: scripts match this message.
  throw KestrelException("Xml Plugin doesn't not support formatters");
}

const std::vector<std::shared_ptr<Formatter>>& XmlPlugin::GetFormatters() {
  static const std::vector<std::shared_ptr<Formatter>> none;
  return none;
}

std::list<std::string> XmlPlugin::SplitPath(const std::string& path) {
  std::list<std::string> words;
  std::size_t begin = 0;
  // An empty component after the last full stop is dropped.
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    words.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return words;
}

void XmlPlugin::AddNamespaces(const xmlNode* node) {
  for (const xmlNode* child : XmlChildren(node)) {
    if (IsNamed(child, "namespace")) {
      AddNamespace(child);
    }
  }
}

void XmlPlugin::AddNamespace(const xmlNode* node) {
  const std::string path = XmlUtil_ExtractAttribute(node, "path");
  const std::string description = XmlUtil_GetContentForChildByTag(node, "description");
  if (path.empty() || description.empty()) {
    throw KestrelException(
        "Unable to register a namespace without valid 'path' attribute or <description> being "
        "present.");
  }
  auto registered = Namespace::New();
  registered->SetDescription(description);
  registrations_.emplace_back(path, registered);
}

void XmlPlugin::AddCommands(const xmlNode* node) {
  for (const xmlNode* child : XmlChildren(node)) {
    if (IsNamed(child, "command")) {
      AddCommand(child);
    }
  }
}

void XmlPlugin::AddCommand(const xmlNode* node) {
  const std::string path = XmlUtil_ExtractAttribute(node, "path");
  if (path.empty()) {
    throw KestrelException(
        "Invalid command specification found.  <command> tags must have a non-empty 'path' "
        "attribute");
  }
  try {
    registrations_.emplace_back(path, ReadCommand(node));
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to register the command 'vexil " + path + "'  Error was " +
                           error.what());
  }
}

std::shared_ptr<ExtensionCommand> XmlPlugin::ReadCommand(const xmlNode* node) {
  auto command = ExtensionCommand::New();
  command->SetDescription(XmlUtil_GetContentForChildByTag(node, "description"));
  const xmlNode* metaData = XmlUtil_FindChildNode(node, "meta-data");
  if (metaData != nullptr) {
    ExtractMetaData(metaData, command);
  }
  command->SetInputSpec(ExtractInputSpec(RequireChild(node, "input-spec")));
  command->SetOutputSpec(ExtractOutputSpec(RequireChild(node, "output-spec")));
  ExtractFormatParams(RequireChild(node, "format-parameters"), command);
  const std::string execute = XmlUtil_GetContentForChildByTag(node, "execute");
  if (execute.empty()) {
    throw KestrelException(
        "Missing or empty <execute> tag.  This tag must specify a valid execution string for this "
        "command.");
  }
  command->SetExecuteCommand(execute);
  command->SetStdin(XmlUtil_GetContentForChildByTag(node, "stdin"));
  return command;
}

}  // namespace Kestrel::AutoCli

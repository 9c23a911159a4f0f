// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/process/FileDescriptor.h"

namespace Kestrel::AutoCli {

// Parse a document as `xmlReadMemory` and `xmlReadFile` do without options. Return null when it is
// not well-formed or cannot be read. Throw KestrelException when memory runs out, for a document
// that exceeds a limit (see libxml2/XmlLimits.h), and when libxml2 cannot be loaded. Nothing is
// fetched from a network.

/// `name` is the name of the document in diagnostics.
XmlDocument ParseXmlText(std::string_view text, const char* name);
/// Reads an open file; `path` is its name in diagnostics.
XmlDocument ParseXmlFile(const FileDescriptor& file, const std::string& path);
/// Reads a file that cannot be read through a file descriptor. If the system does not find `path`,
/// libxml2 may still find a file, because it interprets some paths differently; otherwise it
/// reports the reason. A path that libxml2 would fetch from a network counts as missing.
XmlDocument ParseXmlFile(const std::string& path);

/// Sends the diagnostic for a file that does not exist.
void ReportMissingXmlFile(const std::string& path);

/// Returns the attribute of that name, or the declaration of its default in the document type;
/// null if there is none.
const xmlAttr* FindXmlAttribute(const xmlNode* node, const std::string& name);

/// Returns the value of an attribute. Throws KestrelException when the references to entities in it
/// make it longer than 10 MB.
std::string ExpandXmlAttribute(const xmlAttr& attribute);

/// Throws KestrelException if the references to entities in `node` and below it expand to more than
/// 10 MB of text. `node` may be null.
void RefuseLargeExpansion(const xmlNode* node);

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/process/FileDescriptor.h"

namespace Kestrel::AutoCli {

// Parse a document as `xmlReadMemory` and `xmlReadFile` do without options. Return null when it is
// not well-formed or cannot be read. Throw KestrelException when memory runs out, and for a
// document that exceeds a limit (see XmlLimits.h). Nothing is fetched from a network.

/// `name` is the name of the document in diagnostics.
XmlDocument ParseXmlText(std::string_view text, const char* name);
/// Reads an open file; `path` is its name in diagnostics.
XmlDocument ParseXmlFile(const FileDescriptor& file, const std::string& path);
/// Reads the file at a path that the system cannot open. libxml2 may still find a file, because it
/// interprets some paths differently; otherwise it reports the reason. A path that libxml2 would
/// fetch from a network counts as missing.
XmlDocument ParseXmlFile(const std::string& path);

/// Sends the diagnostic for a file that does not exist.
void ReportMissingXmlFile(const std::string& path);

}  // namespace Kestrel::AutoCli

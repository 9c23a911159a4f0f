// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Used by programs that link the library's object files instead of the shared library. Such
// programs link libxml2, so there is no module to load.

#include "autocli/descriptors/libxml2/Libxml2Parser.h"

namespace Kestrel::AutoCli {

const XmlParser& GetXmlParser() { return *Kestrel_GetXmlParser(); }

}  // namespace Kestrel::AutoCli

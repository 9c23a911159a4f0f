// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Used by the library. Loads the module with libxml2 when it is first needed.

#include "autocli/descriptors/XmlParser.h"
#include "callspec/LibraryModule.h"

namespace Kestrel::AutoCli {
namespace {

using EntryPoint = const XmlParser*();

constexpr CallSpec::LibraryModule kModule = {KESTREL_XML_MODULE, "Kestrel_GetXmlParser",
                                             "XML documents"};

}  // namespace

const XmlParser& GetXmlParser() {
  static auto* const getParser =
      reinterpret_cast<EntryPoint*>(CallSpec::LoadLibraryModule(kModule));
  return *getParser();
}

}  // namespace Kestrel::AutoCli

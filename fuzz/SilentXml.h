#pragma once

#include <libxml/xmlerror.h>

namespace Kestrel::Fuzz {

inline void IgnoreXmlMessage(void*, const char*, ...) {}

/// Keeps libxml2's diagnostics off standard error: almost every input would bring some.
inline void SilenceXml() { xmlSetGenericErrorFunc(nullptr, IgnoreXmlMessage); }

}  // namespace Kestrel::Fuzz

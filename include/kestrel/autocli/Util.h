#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

[[noreturn]] KESTREL_API void Panic(const char* format, ...) __attribute__((format(printf, 1, 2)));
namespace Kestrel::AutoCli {

using CommandExecListener = void (*)(const std::string& commandLine, int status);
using ChildRpZolOptionMaker = std::string (*)(int id);
KESTREL_API bool AutoCli_IsValidName(const std::string& name);
KESTREL_API std::string AutoCli_FormatField(const std::string& typeName,
                                            const std::string& fieldName,
                                            std::shared_ptr<MetaObj::MetaObject> value,
                                            FormatParameters& params);
KESTREL_API void AutoCli_FitString(const int& indent, const int& width, const std::string& text,
                                   bool skipFirstIndent, std::ostream& out, bool endLine,
                                   char wrapChar, bool splitLines);
KESTREL_API int AutoCli_ShellCmd(const std::string& commandLine, std::string& output,
                                 const std::string& stdinData);
KESTREL_API int AutoCli_ShellCmdWithOprUsername(const std::string& commandLine,
                                                const std::string& userName, std::string& output,
                                                const std::string& stdinData);
KESTREL_API void SetCommandExecListener(CommandExecListener listener);
KESTREL_API void SetChildRpZolOptionMaker(ChildRpZolOptionMaker maker);
KESTREL_API std::string MakeChildRpZolOption(int id);

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

/// Reports a state that must not be and ends the process by `abort`: "panic: " and the text of
/// the printf-style `format`, at most 255 characters, on standard error.
[[noreturn]] KESTREL_API void Panic(const char* format, ...) __attribute__((format(printf, 1, 2)));

namespace Kestrel::AutoCli {

/// Told of each finished shell command: its final command line and its wait status.
using CommandExecListener = void (*)(const std::string& commandLine, int status);

/// Makes one extra argument for the shell that runs a command; empty for none.
using ChildRpZolOptionMaker = std::string (*)(int id);

/// Whether `name` may stand in the command tree: ASCII letters and digits, at least one, the first
/// not upper-case, no two upper-case letters in a row.
KESTREL_API bool AutoCli_IsValidName(const std::string& name);

/// The text of one field of a structure of type `typeName`.
///
/// That is the value's `ToString()`, or what the parameter "printf:<typeName>.<fieldName>" makes
/// of it, and then a blank and the parameter "units:<typeName>.<fieldName>" where it is present. A
/// null `value` gives "NULL Object" alone.
///
/// The printf format may hold text, "%%", "%m" and one conversion of the value (or several of the
/// form "%1$.."): d, i, o, u, x, X or c for an integer or a boolean, s for a string. The result is
/// cut at the length of the format + the length of the plain text + 64 bytes. Any other format
/// gives an error text in place of the value, without units. A structure or a list becomes empty.
KESTREL_API std::string AutoCli_FormatField(const std::string& typeName,
                                            const std::string& fieldName,
                                            std::shared_ptr<MetaObj::MetaObject> value,
                                            FormatParameters& params);

/// Writes `text` to `out`, fitted between the columns `indent` and `width`. A byte fills a column.
///
/// A line begins with a margin of `indent` blanks, at least one; `skipFirstIndent` leaves it out
/// of the first line, which something is already written on. A text longer than `width - indent`
/// is broken at blanks; each word, the first of a line too, takes one column more than it has
/// bytes, and a word longer than a line overruns. A broken line ends with `wrapChar`, or with a
/// blank when that is 0. When `width` is not greater than `indent`, nothing is broken. `endLine`
/// ends the last line too. `splitLines` fits each line of `text` by itself; an empty text then
/// writes nothing at all, not even a line end.
KESTREL_API void AutoCli_FitString(const int& indent, const int& width, const std::string& text,
                                   bool skipFirstIndent, std::ostream& out, bool endLine,
                                   char wrapChar, bool splitLines);

/// Runs `commandLine` by /bin/sh, with `stdinData` as its whole standard input, and appends what it
/// writes to its standard output to `output`, until every process that holds it has closed it. Its
/// standard error is this process's. Input and output flow at the same time; any amount is fine.
///
/// Returns the wait status, as `waitpid` gives it: a command that fails is no failure here. Throws
/// KestrelException when it cannot be started, fed, read or waited for; an error while reading
/// keeps what was read before it. Every descriptor is closed on every path.
KESTREL_API int AutoCli_ShellCmd(const std::string& commandLine, std::string& output,
                                 const std::string& stdinData);

/// As AutoCli_ShellCmd, with the environment variable OPR_USERNAME set to `userName` for the
/// command; an empty name leaves the command line as it is.
KESTREL_API int AutoCli_ShellCmdWithOprUsername(const std::string& commandLine,
                                                const std::string& userName, std::string& output,
                                                const std::string& stdinData);

/// Installs what is told of every shell command, or removes it (null). One for the process.
KESTREL_API void SetCommandExecListener(CommandExecListener listener);

/// Installs what makes the extra argument of every shell, or removes it (null). One for the
/// process.
KESTREL_API void SetChildRpZolOptionMaker(ChildRpZolOptionMaker maker);

/// What the installed maker makes of `id`; empty when none is installed.
KESTREL_API std::string MakeChildRpZolOption(int id);

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

/// Ends the process because of an internal error: writes "panic: " and a message to standard error,
/// and calls `abort`. The message is made by the printf format `format` and cut to 255 bytes.
[[noreturn]] KESTREL_API void Panic(const char* format, ...) __attribute__((format(printf, 1, 2)));

namespace Kestrel::AutoCli {

/// Called with the final command line and the wait status of each shell command that has ended.
using CommandExecListener = void (*)(const std::string& commandLine, int status);

/// Returns an extra argument for the shell that runs a command; empty for none.
using ChildRpZolOptionMaker = std::string (*)(int id);

/// Returns whether `name` is a valid name of a namespace or command: one or more ASCII letters and
/// digits, the first not an upper-case letter, and no two adjacent upper-case letters.
KESTREL_API bool AutoCli_IsValidName(const std::string& name);

/// Returns what is printed for `value` in the field `fieldName` of a structure of type `typeName`.
///
/// This is `value->ToString()` or, if there is a parameter "printf:<typeName>.<fieldName>", the
/// value printed by that format. If there is a parameter "units:<typeName>.<fieldName>", a space
/// and the value of that parameter follow. For a null `value`, the result is "NULL Object".
///
/// The format may contain literal text, "%%", "%m" and one conversion of the value (or several of
/// the form "%1$d"): d, i, o, u, x, X or c for an integer or a boolean, s for a string. What it
/// prints is cut to the combined length of the format and `value->ToString()`, plus 64 bytes. For
/// any other format, the result is an error message without units. With a format, a structure or
/// list is printed as an empty string.
KESTREL_API std::string AutoCli_FormatField(const std::string& typeName,
                                            const std::string& fieldName,
                                            std::shared_ptr<MetaObj::MetaObject> value,
                                            FormatParameters& params);

/// Writes `text` to `out`, fitted between the columns `indent` and `width`. A byte takes one
/// column.
///
/// - Each line begins with a margin of `indent` spaces, at least one. With `skipFirstIndent`, the
///   first line has none, because it continues a line.
/// - If `text` has more than `width - indent` bytes, it is broken into lines at spaces. Each word
///   takes one column more than it has bytes. A word that is longer than a line is not broken. If
///   `width` is not greater than `indent`, no line is broken.
/// - A line that is broken ends with `wrapChar`, or with a space if that is 0.
/// - With `endLine`, a line end follows the last line.
/// - With `splitLines`, each line of `text` is fitted separately, and an empty `text` writes
///   nothing, not even a line end.
KESTREL_API void AutoCli_FitString(const int& indent, const int& width, const std::string& text,
                                   bool skipFirstIndent, std::ostream& out, bool endLine,
                                   char wrapChar, bool splitLines);

/// Runs `commandLine` in /bin/sh with `stdinData` as its standard input, and appends its standard
/// output to `output`. Reads until every process that has inherited the output has closed it. Input
/// and output may be of any size, as they are transferred at the same time. Standard error is that
/// of this process.
///
/// Returns the wait status as `waitpid` reports it; the failure of a command is not an error here.
/// Throws KestrelException if the command cannot be started, written to, read from or waited for.
/// If reading fails, `output` contains what was read before.
KESTREL_API int AutoCli_ShellCmd(const std::string& commandLine, std::string& output,
                                 const std::string& stdinData);

/// Like AutoCli_ShellCmd, but begins the command line with an assignment of `userName`, quoted, to
/// the variable OPR_USERNAME. If `userName` is empty, the command line is unchanged.
KESTREL_API int AutoCli_ShellCmdWithOprUsername(const std::string& commandLine,
                                                const std::string& userName, std::string& output,
                                                const std::string& stdinData);

/// Sets the function that is called after each shell command, or removes it if `listener` is null.
/// There is one per process.
KESTREL_API void SetCommandExecListener(CommandExecListener listener);

/// Sets the function that makes an extra argument for the shell, or removes it if `maker` is null.
/// There is one per process.
KESTREL_API void SetChildRpZolOptionMaker(ChildRpZolOptionMaker maker);

/// Returns what the function set with SetChildRpZolOptionMaker returns for `id`; empty if there is
/// none.
KESTREL_API std::string MakeChildRpZolOption(int id);

}  // namespace Kestrel::AutoCli

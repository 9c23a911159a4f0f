// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/doctor/Access.h"
#include "tools/doctor/Examination.h"

namespace Kestrel::Doctor {

/// The path of a command that another plug-in already has.
struct DuplicatePath {
  std::string path;
  std::string file;  ///< the plug-in that has it, or "built-in"
};

/// A plug-in and the results of its examination.
struct Diagnosis {
  std::string file;
  Examination examination;
  FileAccess access;
  std::optional<unsigned> abi;
  std::vector<DuplicatePath> duplicates;
};

struct DoctorResult {
  std::vector<Diagnosis> plugins;       ///< in the order of the arguments, then in that of the tool
  std::vector<std::string> unreadable;  ///< a message for each file or folder that cannot be read
};

/// Examines the plug-ins in folders, or single files; without arguments, those that the tool loads
/// by default. Every plug-in is loaded in a process of its own. The plug-ins before it are loaded
/// there first, except those that would end or block the tool. Each may take as long as `patience`.
DoctorResult ExaminePlugins(const std::vector<std::string>& paths,
                            std::chrono::milliseconds patience);

/// Returns 0 if all plug-ins work, 1 if not, 2 if something cannot be read.
int StatusOf(const DoctorResult& result);

}  // namespace Kestrel::Doctor

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/doctor/Doctor.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <system_error>

#include "tools/catalog/Catalog.h"
#include "tools/doctor/AbiNumber.h"
#include "tools/isolation/PluginFaults.h"

namespace Kestrel::Doctor {

namespace {

using std::chrono::milliseconds;

bool HasSuffix(std::string_view file, std::string_view suffix) {
  return file.size() > suffix.size() &&
         file.compare(file.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool IsPlugin(std::string_view file) { return HasSuffix(file, ".so") || HasSuffix(file, ".xml"); }

/// Adds the plug-ins in a folder in the order of the loader. Returns the error if the folder cannot
/// be read.
std::error_code AddFolder(const std::string& folder, std::vector<std::string>& files) {
  std::error_code error;
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string file = folder + "/" + entry.path().filename().string();
    if (IsPlugin(file)) {
      found.insert(file);
    }
  }
  files.insert(files.end(), found.begin(), found.end());
  return error;
}

/// Examines one plug-in after the other.
class Doctor {
 public:
  explicit Doctor(milliseconds patience) : patience_(patience) {
    for (const std::string& path : ListBuiltInCommands()) {
      owners_.emplace(path, Catalog::kBuiltIn);
    }
  }

  void ExamineAll(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_directory(path, error)) {
      ExamineFile(path);
      return;
    }
    std::vector<std::string> files;
    for (const char* part : {"/lib64", "", "/ext/lib64", "/ext"}) {
      error = AddFolder(path + part, files);
      if (error && (*part == '\0' || error != std::errc::no_such_file_or_directory)) {
        result.unreadable.push_back("cannot read " + path + part + ": " + error.message());
      }
    }
    for (const std::string& file : files) {
      Examine(file);
    }
  }

  DoctorResult result;

 private:
  void ExamineFile(const std::string& path) {
    const std::string file = Isolation::PathForLoader(path);
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
      result.unreadable.push_back(
          "cannot read " + file + ": " +
          (error ? error : make_error_code(std::errc::no_such_file_or_directory)).message());
    } else if (access(file.c_str(), R_OK) != 0) {
      result.unreadable.push_back("cannot read " + file + ": " + std::strerror(errno));
    } else if (!IsPlugin(file)) {
      result.unreadable.push_back(file +
                                  " is not a plug-in: its name ends in neither .so nor .xml");
    } else {
      Examine(file);
    }
  }

  void Examine(const std::string& file) {
    if (!seen_.insert(file).second) {
      return;
    }
    Diagnosis plugin;
    plugin.file = file;
    plugin.access = ReadAccess(file);
    std::error_code error;
    if (HasSuffix(file, ".so") && std::filesystem::is_regular_file(file, error)) {
      plugin.abi = ReadAbiNumber(file);
    }
    plugin.examination = ExamineLoading(file);
    Examination& examination = plugin.examination;
    if (examination.state == State::Refused) {
      plugin.duplicates = FindDuplicates(file);
    }
    AddAccessFaults(plugin);
    for (const std::string& path : examination.commands) {
      owners_.emplace(path, file);
    }
    if (examination.state <= State::Refused) {
      before_.push_back(file);
    }
    result.plugins.push_back(std::move(plugin));
  }

  Examination ExamineLoading(const std::string& file) const {
    return Kestrel::Doctor::Examine(file, before_, patience_);
  }

  static void AddAccessFaults(Diagnosis& plugin) {
    Examination& examination = plugin.examination;
    for (const std::string& fault : plugin.access.faults) {
      examination.state = std::max(examination.state, State::Faulty);
      examination.reasons.push_back(fault);
    }
  }

  std::vector<DuplicatePath> FindDuplicates(const std::string& file) const {
    std::vector<DuplicatePath> duplicates;
    for (const std::string& path : ListDeclaredCommands(file, patience_)) {
      const auto owner = owners_.find(path);
      if (owner != owners_.end()) {
        duplicates.push_back({path, owner->second});
      }
    }
    return duplicates;
  }

  const milliseconds patience_;
  std::map<std::string, std::string> owners_;  // by the path of a command: its plug-in
  std::vector<std::string> before_;
  std::set<std::string> seen_;
};

}  // namespace

DoctorResult ExaminePlugins(const std::vector<std::string>& paths, milliseconds patience) {
  Doctor doctor(patience);
  for (const std::string& path :
       paths.empty() ? std::vector<std::string>{KESTREL_PLUGIN_DIR} : paths) {
    doctor.ExamineAll(path);
  }
  return std::move(doctor.result);
}

int StatusOf(const DoctorResult& result) {
  if (!result.unreadable.empty()) {
    return 2;
  }
  return std::all_of(
             result.plugins.begin(), result.plugins.end(),
             [](const Diagnosis& plugin) { return plugin.examination.state == State::Loaded; })
             ? 0
             : 1;
}

}  // namespace Kestrel::Doctor

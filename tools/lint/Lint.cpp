// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Lint.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/Namespace.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "tools/lint/Checks.h"
#include "tools/lint/SharedObject.h"
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Lint {

using AutoCli::Namespace;

namespace {

constexpr std::chrono::milliseconds kPatience(2000);

bool HasSuffix(const std::string& file, const std::string& suffix) {
  return file.size() >= suffix.size() &&
         file.compare(file.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool IsTooLarge(const std::string& descriptor) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(descriptor, error);
  return !error && size > Document::kMaxSize;
}

// Returns why a file cannot be read; empty if it can. Pipes and devices are refused, because they
// may have no end.
std::string FindObstacle(const std::string& file) {
  std::error_code error;
  const auto type = std::filesystem::status(file, error).type();
  if (!error && type != std::filesystem::file_type::regular) {
    return "it is not a regular file";
  }
  if (!HasSuffix(file, ".so") && IsTooLarge(file)) {
    return "it is larger than " + std::to_string(Document::kMaxSize) + " bytes";
  }
  return access(file.c_str(), R_OK) == 0 ? std::string() : std::strerror(errno);
}

std::string ReadFile(const std::string& file) {
  std::ifstream in(file, std::ios_base::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Returns the plug-ins in a folder, in the order of the loader. Adds the folder to `unreadable` if
// it cannot be read.
std::vector<std::string> ListFolder(const std::string& folder,
                                    std::vector<std::string>& unreadable) {
  std::vector<std::string> all;
  std::error_code obstacle;
  std::filesystem::directory_iterator(folder, obstacle);
  if (obstacle) {
    unreadable.push_back("cannot read " + folder + ": " + obstacle.message());
    return all;
  }
  for (const char* const inner : {"/lib64", "", "/ext/lib64", "/ext"}) {
    const std::string part = folder + inner;
    std::set<std::string> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(part, error)) {
      const std::string file = entry.path().string();
      if (HasSuffix(file, ".so") || HasSuffix(file, ".xml")) {
        files.insert(file);
      }
    }
    all.insert(all.end(), files.begin(), files.end());
    if (error && error != std::errc::no_such_file_or_directory) {
      unreadable.push_back("cannot read " + part + ": " + error.message());
    }
  }
  return all;
}

std::string WithFullStops(std::string path) {
  std::replace(path.begin(), path.end(), ' ', '.');
  return path;
}

class Linter {
 public:
  explicit Linter(const std::set<std::string>& suppressed) : suppressed_(suppressed) {
    dispatcher_.RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  }

  void Examine(const std::string& file) {
    const std::string obstacle = FindObstacle(file);
    if (!obstacle.empty()) {
      result.unreadable.push_back("cannot read " + file + ": " + obstacle);
      return;
    }
    FileReport report(file, suppressed_);
    if (HasSuffix(file, ".so")) {
      ExamineObject(file, report);
    } else {
      ExamineDescriptor(ReadFile(file), report);
    }
    before_.push_back(file);
    const std::vector<Finding>& findings = report.GetFindings();
    result.findings.insert(result.findings.end(), findings.begin(), findings.end());
  }

  LintResult result;

 private:
  void ExamineDescriptor(const std::string& text, FileReport& report) {
    const Document document(text);
    if (!HasSuffix(report.GetFile(), ".xml")) {
      report.AddAt("file-suffix", nullptr, {}, "the loader ignores a file of this name",
                   "let the name end in '.xml'");
    }
    if (document.GetProblem()) {
      ReportProblem(*document.GetProblem(), report);
      return;
    }
    const Element& root = *document.GetRoot();
    const std::vector<CommandParts> commands = CheckLoading(root, report.GetFile(), report);
    CheckStructure(document, report);
    CheckPaths(root, host_, report);
    for (const CommandParts& command : commands) {
      CheckParameters(command, report);
      CheckFormats(command, host_, report);
      CheckMetaData(command, report);
      CheckTemplates(document, command, report);
      CheckScript(command, report);
    }
    CheckSuppressions(document, report);
  }

  static void ReportProblem(const Document::Problem& problem, FileReport& report) {
    std::string refusal;
    const SilentParser silent;
    try {
      AutoCli::XmlPlugin::New(report.GetFile())->Initialize();
    } catch (const KestrelException& error) {
      refusal = error.what();
    }
    report.AddAt(problem.rule, nullptr, problem.position, problem.what,
                 problem.mayLoad ? "write UTF-8 without a document type"
                                 : "correct it; the loader refuses the file: " + refusal);
    if (problem.mayLoad && !refusal.empty()) {
      report.AddAt("refused", nullptr, {}, "the loader refuses this: " + refusal,
                   "correct what it names");
    }
  }

  void ExamineObject(const std::string& file, FileReport& report) {
    const ObjectReport object = ExamineSharedObject(file, before_, kPatience);
    for (const ObjectFault& fault : object.faults) {
      report.AddAt(fault.rule.c_str(), nullptr, {}, fault.what, fault.advice);
    }
    host_.formatters.insert(object.formatters.begin(), object.formatters.end());
    for (const Catalog::Namespace& declared : object.tree.namespaces) {
      const std::shared_ptr<Namespace> node = Namespace::New();
      node->SetDescription(declared.description);
      InsertNode(WithFullStops(declared.path), node, file, host_);
    }
    for (const Catalog::Command& command : object.tree.commands) {
      InsertNode(WithFullStops(command.path), AutoCli::ExtensionCommand::New(), file, host_);
    }
  }

  const std::set<std::string>& suppressed_;
  AutoCli::Dispatcher dispatcher_;
  Host host_{dispatcher_, {}, {}};
  std::vector<std::string> before_;
};

}  // namespace

LintResult LintFiles(const std::vector<std::string>& paths,
                     const std::set<std::string>& suppressed) {
  Linter linter(suppressed);
  std::set<std::string> seen;
  for (const std::string& path : paths) {
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(path, error);
    for (const std::string& file :
         isFolder ? ListFolder(path, linter.result.unreadable) : std::vector<std::string>{path}) {
      if (seen.insert(file).second) {
        linter.Examine(file);
      }
    }
  }
  std::stable_sort(linter.result.findings.begin(), linter.result.findings.end());
  return std::move(linter.result);
}

int StatusOf(const LintResult& result) {
  if (!result.unreadable.empty()) {
    return 2;
  }
  return std::any_of(result.findings.begin(), result.findings.end(),
                     [](const Finding& finding) {
                       return finding.rule->severity == Severity::Error ||
                              finding.rule->severity == Severity::Warning;
                     })
             ? 1
             : 0;
}

}  // namespace Kestrel::Lint

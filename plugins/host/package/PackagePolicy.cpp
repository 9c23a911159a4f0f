// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The output for each package:
//
//   bash:
//     Installed: 5.2.15-2+b8
//     Candidate: 5.2.15-2+b13
//     Version table:
//        5.2.15-2+b13 500
//           500 http://deb.example.org/debian stable/main amd64 Packages
//    *** 5.2.15-2+b8 100
//           100 /var/lib/dpkg/status

#include "plugins/host/package/PackagePolicy.h"

#include <kestrel/KestrelException.h>

#include <vector>

#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/package/ControlFile.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kVersionColumn = 5;
constexpr char kInstalledMarker[] = " *** ";
constexpr char kCandidate[] = "  Candidate: ";
constexpr char kNone[] = "(none)";
// dpkg's database, which apt lists among the sources of a version.
constexpr char kDatabase[] = "/var/lib/dpkg/status";

std::size_t Indentation(std::string_view line) {
  if (StartsWith(line, kInstalledMarker)) {
    return kVersionColumn;
  }
  const std::size_t indentation = line.find_first_not_of(' ');
  return indentation == std::string_view::npos ? line.size() : indentation;
}

// Returns "http://... Packages" from "500 http://... Packages".
std::string_view SourceIn(std::string_view line) {
  line = Trim(line);
  return Trim(line.substr(SplitWords(line).front().size()));
}

// Whether a line of the table, "version priority", is about this version.
bool IsVersion(std::string_view line, std::string_view version) {
  const std::vector<std::string_view> words = SplitWords(line);
  return !words.empty() && words.front() == version;
}

class PolicyReader {
 public:
  explicit PolicyReader(PackagePolicy& policy) : policy_(policy) {}

  void Read(std::string_view line) {
    const std::size_t indentation = Indentation(line);
    if (indentation == 0) {
      StartPackage(line);
    } else if (candidate_ == nullptr) {
      throw KestrelException("The output of apt-cache has an unknown form: " + ShownLine(line));
    } else if (StartsWith(line, kCandidate)) {
      const std::string_view version = Trim(line.substr(sizeof kCandidate - 1));
      candidate_->isKnown = true;
      candidate_->version = version == kNone ? std::string_view() : version;
    } else if (indentation == kVersionColumn) {
      isCandidate_ = IsVersion(line.substr(kVersionColumn), candidate_->version);
    } else if (indentation > kVersionColumn) {
      ReadSource(SourceIn(line));
    }
  }

 private:
  void StartPackage(std::string_view line) {
    if (line.size() < 2 || line.back() != ':') {
      throw KestrelException("The output of apt-cache has an unknown form: " + ShownLine(line));
    }
    candidate_ = &policy_.candidates[std::string(line.substr(0, line.size() - 1))];
    isCandidate_ = false;
  }

  void ReadSource(std::string_view source) {
    if (source == kDatabase) {
      return;
    }
    policy_.hasLists = true;
    if (isCandidate_ && candidate_->source.empty()) {
      candidate_->source = source;
    }
  }

  PackagePolicy& policy_;
  PackageCandidate* candidate_ = nullptr;
  bool isCandidate_ = false;  // whether the following sources belong to the candidate
};

}  // namespace

void PackagePolicy::Add(std::string_view output) {
  if (!output.empty() && output.back() != '\n') {
    throw KestrelException("apt-cache's answer ends in the middle of a line");
  }
  PolicyReader reader(*this);
  for (const std::string_view line : SplitLines(output)) {
    if (!Trim(line).empty()) {
      reader.Read(line);
    }
  }
}

}  // namespace Kestrel::Host

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "plugins/host/frame/ChildProcess.h"
#include "plugins/host/service/Service.h"

namespace Kestrel::Host {

/// The init scripts that manage services on a machine without systemd.
class InitScripts {
 public:
  /// How long a script may take to report the state of its service.
  static constexpr std::chrono::seconds kStatusLimit{5};

  /// The parent of `folder` also contains the folders rc2.d and so on, whose links say which
  /// scripts are started at boot.
  explicit InitScripts(std::string folder, std::chrono::milliseconds limit = kStatusLimit);

  /// Returns the services in byte order of their names. Runs each script that contains the word
  /// "status" with that argument; its exit status has the meaning that the Linux Standard Base
  /// defines. Returns none if there is no such folder. Throws KestrelException if the folder cannot
  /// be read.
  std::vector<Service> Read() const;

  /// Returns a single service; nothing if there is no such script.
  std::optional<ServiceDetails> Read(const std::string& name) const;

  /// Runs a script with "start", "stop" and so on.
  ProgramResult Run(const std::string& name, const std::string& action,
                    std::chrono::milliseconds limit) const;

 private:
  std::string PathOf(const std::string& name) const { return folder_ + "/" + name; }
  Service ToService(const std::string& name, bool startsAtBoot) const;
  std::string AskState(const std::string& name, const std::string& script) const;

  std::string folder_;
  std::chrono::milliseconds limit_;
};

}  // namespace Kestrel::Host

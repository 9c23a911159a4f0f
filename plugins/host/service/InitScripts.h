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

/// The scripts that manage services on a machine without systemd.
class InitScripts {
 public:
  /// How long a script may take to report the state of its service.
  static constexpr std::chrono::seconds kStatusLimit{5};

  /// Beside the folder with the scripts are the folders rc2.d and so on, whose links start them.
  explicit InitScripts(std::string folder, std::chrono::milliseconds limit = kStatusLimit);

  /// The services in byte order of their names. Each script that knows "status" is asked, and its
  /// exit status has the meaning that the Linux Standard Base defines. Throws KestrelException when
  /// the folder cannot be read; none when there is no such folder.
  std::vector<Service> Read() const;

  /// One of them; nothing when there is no such script.
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

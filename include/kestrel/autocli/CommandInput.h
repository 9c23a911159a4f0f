// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/callspec/Input.h"

namespace Kestrel::AutoCli {

/// The input of a command's call, with the name of the dispatcher and the path of the command.
class KESTREL_API CommandInput : public CallSpec::Input {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes an input without parameters, with an empty dispatcher name and an empty path.
  static std::shared_ptr<CommandInput> New();

  /// For `New` only; no other caller can make the flag.
  explicit CommandInput(FactoryFlag flag);
  ~CommandInput() override;

  /// Sets the name of the dispatcher, which help pages show.
  void SetDispatcher(const std::string& dispatcher);

  /// The name of the dispatcher. The reference is valid as long as this object exists.
  const std::string& GetDispatcher() const;

  /// Sets the path to a copy of `path`: the names of the namespaces below the root, then the name
  /// of the command.
  void SetCommandPath(const std::list<std::string>& path);

  /// The path. The reference is valid as long as this object exists.
  const std::list<std::string>& GetCommandPath() const;

  /// The elements of the path, joined with a space.
  std::string GetCommandPathString() const;

 private:
  std::string dispatcher_;
  std::list<std::string> commandPath_;
};

}  // namespace Kestrel::AutoCli

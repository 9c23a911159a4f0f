// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::AutoCli {

/// The output of a command's call. It can also store its formatted text.
class KESTREL_API CommandOutput : public CallSpec::Output {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes an empty output with an empty formatted string.
  static std::shared_ptr<CommandOutput> New();

  /// For `New` only; no other caller can make the flag.
  explicit CommandOutput(FactoryFlag flag);
  ~CommandOutput() override;

  /// Sets the formatted string.
  void SetFormattedString(const std::string& text);

  /// The formatted string. The reference is valid as long as this object exists.
  const std::string& GetFormattedString() const;

 private:
  std::string formattedString_;
};

}  // namespace Kestrel::AutoCli

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

/// A substitute for systemd: programs systemctl and journalctl, the only ones in PATH, which print
/// what a test sets and note how they were called.
///
/// They answer by the first argument that is not an option; journalctl, which has no such argument,
/// by "journal". One without an answer fails as the real program does for an unknown word.
class MadeUpSystemd {
 public:
  MadeUpSystemd();

  /// Sets what is printed for a word, and the exit status.
  void Answer(const std::string& word, const std::string& output, int status = 0,
              const std::string& errorOutput = "") const;

  /// Makes the answer to a word a failure with these words.
  void Fail(const std::string& word, const std::string& words, int status = 1) const {
    Answer(word, "", status, words + "\n");
  }

  /// Adds what a shell does after it printed the answer to a word.
  void Do(const std::string& word, const std::string& script) const;

  /// Makes the answer to `word` the new answer to "show", as when a unit changes its state.
  void AnswerAfter(const std::string& word, const std::string& output) const;

  /// Removes one of the programs.
  void Remove(const std::string& program) const;

  /// The arguments of each call in order, joined by spaces.
  std::vector<std::string> GetCalls() const;

  /// The path of a file in the folder of the programs.
  std::string GetPath(const std::string& name) const { return folder_.GetPath(name); }

 private:
  ScopedTempDir folder_;
  ScopedEnvironment path_;
};

/// What "systemctl show" prints for a unit in such a state, recorded from systemd 252.
std::string ShownUnit(const std::string& unit, const std::string& active, const std::string& sub,
                      int mainProcess, const std::string& boot = "enabled",
                      const std::string& load = "loaded");

/// The same for a name that systemd does not know.
std::string ShownUnknown(const std::string& unit);

}  // namespace Kestrel::Testing

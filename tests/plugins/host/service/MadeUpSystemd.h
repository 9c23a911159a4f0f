// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

/// Simulates systemd: the programs systemctl and journalctl, the only ones in PATH, print the
/// output that a test sets and record their arguments.
///
/// The output depends on the word of the call, which is the first argument that is not an option.
/// Calls of journalctl have no such argument; their word is "journal". If neither output nor
/// commands are set for a word, the program fails as the real one does for an unknown word.
class MadeUpSystemd {
 public:
  MadeUpSystemd();

  /// Sets what a call for a word prints on both streams, and its exit status.
  void Answer(const std::string& word, const std::string& output, int status = 0,
              const std::string& errorOutput = "") const;

  /// Makes the call for a word fail with the message `words`.
  void Fail(const std::string& word, const std::string& words, int status = 1) const {
    Answer(word, "", status, words + "\n");
  }

  /// Sets shell commands to run after printing the output for a word.
  void Do(const std::string& word, const std::string& script) const;

  /// Makes a call for `word` set a new output for "show", as if the unit changed its state.
  void AnswerAfter(const std::string& word, const std::string& output) const;

  /// Removes one of the programs.
  void Remove(const std::string& program) const;

  /// Returns the arguments of each call in order, joined by spaces.
  std::vector<std::string> GetCalls() const;

  /// Returns the path of a file in the folder of the programs.
  std::string GetPath(const std::string& name) const { return folder_.GetPath(name); }

 private:
  ScopedTempDir folder_;
  ScopedEnvironment path_;
};

/// Returns the output of "systemctl show" for a unit in the given state, as systemd 252 prints it.
std::string ShownUnit(const std::string& unit, const std::string& active, const std::string& sub,
                      int mainProcess, const std::string& boot = "enabled",
                      const std::string& load = "loaded");

/// Returns the output of "systemctl show" for a name that systemd does not know.
std::string ShownUnknown(const std::string& unit);

}  // namespace Kestrel::Testing

// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// A terminal with a person in front of it: the test types, reads the screen and sends signals, and
/// one process of the test's own works on it in the foreground.
///
/// Between the two stands a process that does a shell's part: it leads the session, notices when
/// the work stops, takes the terminal and gives it back when the work is to go on. Every wait ends
/// after ten seconds and then fails the test.
class PseudoTerminal {
 public:
  /// A terminal of 80 columns and 24 rows.
  PseudoTerminal();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  void SetSize(unsigned short columns, unsigned short rows);

  /// Runs `work` in a child whose standard streams are the terminal; what it returns is the exit
  /// status. Once for each terminal.
  void Start(const std::function<int()>& work);

  /// Types the text; "\n" is the return key.
  void Type(std::string_view text);

  /// Reads the screen up to `text` and returns everything new on it, `text` included. Line ends
  /// come as "\r\n".
  std::string ReadUntil(const std::string& text);

  /// Whether what is typed now would show.
  bool IsEchoOn() const;

  /// Turns echo on or off, as a shell does when it takes the terminal.
  void SetEcho(bool isOn);

  /// Sends a signal to the work.
  void Send(int signal);

  /// Waits until the work is stopped; false when it ended or went on instead.
  bool WaitUntilStopped();

  /// Puts the stopped work into the foreground, as a shell's fg does, and lets it go on.
  void Continue();

  /// Lets the stopped work go on without giving it the terminal, as a shell's bg does.
  void ContinueInBackground();

  /// Waits for the end of the work: the status as waitpid gives it.
  int WaitForEnd();

  /// What is on the screen and not read yet.
  std::string ReadRest();

 private:
  [[noreturn]] void Lead(const std::function<int()>& work);
  int WaitForChange();

  int keyboard_;
  int terminal_;
  int changes_ = -1;
  int orders_ = -1;
  pid_t leader_ = -1;
  pid_t work_ = -1;
  std::string screen_;
};

}  // namespace Kestrel::Testing
